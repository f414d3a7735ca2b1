#include "switcher/BrowserTabs.h"
#include "platform/Scripting.h"
#include <QPointer>
#include <algorithm>
#include <optional>

namespace orlo {

const QStringList BrowserTabs::safari{QStringLiteral("com.apple.Safari"), QStringLiteral("com.apple.SafariTechnologyPreview")};
const QStringList BrowserTabs::chromium{QStringLiteral("com.google.Chrome"), QStringLiteral("com.google.Chrome.beta"),
                                        QStringLiteral("com.google.Chrome.canary"), QStringLiteral("com.brave.Browser"),
                                        QStringLiteral("com.microsoft.edgemac"), QStringLiteral("com.vivaldi.Vivaldi")};

namespace {
constexpr QChar fieldSeparator(31);
constexpr QChar recordSeparator(30);
// A decimal integer and nothing else: no blanks, no sign but a leading minus.
std::optional<qint64> integer(QStringView text)
{
    const QStringView digits = text.startsWith(QLatin1Char('-')) ? text.mid(1) : text;
    if (digits.isEmpty() || !std::all_of(digits.begin(), digits.end(), [](QChar c) { return c >= u'0' && c <= u'9'; }))
        return std::nullopt;
    bool ok = false;
    const qint64 value = text.toLongLong(&ok);
    return ok ? std::optional<qint64>(value) : std::nullopt;
}
}  // namespace

BrowserTabs::BrowserTabs(Scripting& scripting, WindowCatalog& catalog, QObject* parent)
    : QObject(parent), scripting_(scripting), catalog_(catalog)
{
    worker_.setMaxThreadCount(1);
    worker_.setObjectName(QStringLiteral("orlo.switcher.tabs"));
}

BrowserTabs::~BrowserTabs() { worker_.waitForDone(); }

bool BrowserTabs::isAvailable() const { return scripting_.isAvailable(); }

void BrowserTabs::waitForWorker() { worker_.waitForDone(); }

QList<RunningApp> BrowserTabs::runningBrowsers(const QSet<QString>& excluded)
{
    QList<RunningApp> browsers;
    for (const RunningApp& app : catalog_.runningApplications())
        if ((safari.contains(app.bundleId) || chromium.contains(app.bundleId)) && !excluded.contains(app.bundleId)) browsers << app;
    return browsers;
}

QString BrowserTabs::listingScript(const QString& bundleId)
{
    const QString property = safari.contains(bundleId) ? QStringLiteral("name") : QStringLiteral("title");
    const QStringList lines{
        QStringLiteral("tell application id \"%1\"").arg(bundleId),
        QStringLiteral("    with timeout of 2 seconds"),
        QStringLiteral("        set fs to character id 31"),
        QStringLiteral("        set rs to character id 30"),
        QStringLiteral("        set out to \"\""),
        QStringLiteral("        repeat with w in (every window)"),
        QStringLiteral("            try"),
        QStringLiteral("                set wid to id of w"),
        QStringLiteral("                set titles to %1 of every tab of w").arg(property),
        QStringLiteral("                set i to 0"),
        QStringLiteral("                repeat with t in titles"),
        QStringLiteral("                    set i to i + 1"),
        QStringLiteral("                    set out to out & wid & fs & i & fs & t & rs"),
        QStringLiteral("                end repeat"),
        QStringLiteral("            end try"),
        QStringLiteral("        end repeat"),
        QStringLiteral("        return out"),
        QStringLiteral("    end timeout"),
        QStringLiteral("end tell"),
    };
    return lines.join(QLatin1Char('\n'));
}

QString BrowserTabs::selectingScript(const BrowserTab& tab)
{
    const QString choose = safari.contains(tab.bundleID)
        ? QStringLiteral("        set current tab of w to tab %1 of w").arg(tab.index)
        : QStringLiteral("        set active tab index of w to %1").arg(tab.index);
    const QStringList lines{
        QStringLiteral("tell application id \"%1\"").arg(tab.bundleID),
        QStringLiteral("    with timeout of 2 seconds"),
        QStringLiteral("        set w to window id %1").arg(tab.windowID),
        choose,
        QStringLiteral("        set index of w to 1"),
        QStringLiteral("        activate"),
        QStringLiteral("    end timeout"),
        QStringLiteral("end tell"),
    };
    return lines.join(QLatin1Char('\n'));
}

QList<BrowserTab> BrowserTabs::parse(const QString& bundleId, const QString& answer)
{
    QList<BrowserTab> tabs;
    for (const QString& record : answer.split(recordSeparator, Qt::SkipEmptyParts)) {
        // At most three fields: a title may itself hold the separator.
        const qsizetype first = record.indexOf(fieldSeparator);
        const qsizetype second = first < 0 ? -1 : record.indexOf(fieldSeparator, first + 1);
        if (second < 0) continue;
        const auto window = integer(QStringView(record).left(first));
        const auto index = integer(QStringView(record).mid(first + 1, second - first - 1));
        if (!window || !index) continue;
        const QString title = record.mid(second + 1);
        tabs << BrowserTab{bundleId, *window, *index, title.isEmpty() ? QStringLiteral("Untitled") : title};
    }
    return tabs;
}

void BrowserTabs::refresh(const QSet<QString>& excluded, std::function<void(const Tabs&)> done)
{
    if (refreshing_) return;
    refreshing_ = true;
    QStringList ids;
    for (const RunningApp& browser : runningBrowsers(excluded)) ids << browser.bundleId;
    QPointer<BrowserTabs> self(this);
    Scripting* scripting = &scripting_;
    worker_.start([self, scripting, ids, done = std::move(done)] {
        Tabs tabs;
        QSet<QString> denied;
        for (const QString& id : ids) {
            const Scripting::Result result = scripting->run(listingScript(id));
            if (const auto* answer = std::get_if<QString>(&result))
                tabs.insert(id, parse(id, *answer));
            else if (std::get<Scripting::Failure>(result).code == AutomationDenied)
                denied.insert(id);
        }
        QMetaObject::invokeMethod(self, [self, tabs, denied, done] {
            if (!self) return;
            self->refreshing_ = false;
            self->cache_ = tabs;
            if (denied != self->denied_) {
                self->denied_ = denied;
                emit self->deniedChanged();
            }
            if (done) done(tabs);
        }, Qt::QueuedConnection);
    });
}

void BrowserTabs::select(const BrowserTab& tab)
{
    Scripting* scripting = &scripting_;
    const QString source = selectingScript(tab);
    worker_.start([scripting, source] { scripting->run(source); });
    for (const RunningApp& app : catalog_.runningApplications())
        if (app.bundleId == tab.bundleID) {
            catalog_.activate(app.pid);
            break;
        }
}

}  // namespace orlo
