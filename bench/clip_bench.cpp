// Clipboard history at scale: generated histories of 100, 10,000 and 100,000 items (mixed kinds,
// mostly short texts as people copy them) are loaded, saved, shown in the picker and
// searched; a 1 MB text is captured; the memory of a process holding the history is read.
// Prints each figure. Runs on Qt's offscreen platform with Orlo's fake ports.
#include "FakePlatform.h"
#include "kit/Defaults.h"
#include "clipboard/ClipHistoryFile.h"
#include "clipboard/ClipboardPicker.h"
#include "clipboard/ClipboardSettings.h"
#include "clipboard/ClipboardStore.h"
#include "clipboard/PickerPanel.h"
#include <QApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QImage>
#include <QLineEdit>
#include <QListView>
#include <QProcess>
#include <QRandomGenerator>
#include <QTemporaryDir>
#include <QThreadPool>
#include <algorithm>
#include <cstdio>
#ifdef ORLO_BENCH_SIMDJSON
#include "SimdjsonPeer.h"
#endif

using namespace orlo;

namespace {

const QStringList Words = QString(
    "the of and to in is you that it he was for on are as with his they at be this have from or one had by word but not "
    "what all were we when your can said there use an each which she do how their if will up other about out many then "
    "them these so some her would make like him into time has look two more write go see number no way could people my "
    "than first water been call who oil its now find long down day did get come made may part function return const "
    "https://example.org/path?id= invoice meeting tomorrow password reset address Street Berlin Zürich naïve café")
                              .split(' ');

QString words(QRandomGenerator& random, int length)
{
    QString text;
    text.reserve(length + 16);
    while (text.size() < length) {
        text += Words[int(random.bounded(qsizetype(Words.size())))];
        text += random.bounded(12) == 0 ? QLatin1Char('\n') : QLatin1Char(' ');
    }
    text.truncate(length);
    return text;
}

// Most copies are a word, a line or a link; some a paragraph; a few a page.
int textLength(QRandomGenerator& random)
{
    const int roll = int(random.bounded(100));
    if (roll < 55) return 5 + int(random.bounded(55));
    if (roll < 85) return 60 + int(random.bounded(240));
    if (roll < 97) return 300 + int(random.bounded(1200));
    return 1500 + int(random.bounded(2500));
}

QList<ClipItem> generate(int count, const QStringList& imageNames)
{
    QRandomGenerator random(count);
    const QList<QPair<QString, QString>> apps{{"org.mozilla.firefox", "Firefox"}, {"org.gnome.TextEditor", "Text Editor"},
                                              {"code", "Code"}, {"org.gnome.Terminal", "Terminal"},
                                              {"thunderbird", "Thunderbird"}, {"libreoffice-writer", "LibreOffice Writer"}};
    QList<ClipItem> items;
    items.reserve(count);
    const QDateTime now = QDateTime::currentDateTimeUtc();
    for (int i = 0; i < count; ++i) {
        const int roll = int(random.bounded(100));
        ClipItem item;
        if (roll < 75) {
            const QString text = words(random, textLength(random));
            std::optional<QByteArray> html;
            if (roll < 10) html = "<meta charset='utf-8'><p style=\"font-family: sans-serif\">" + text.toUtf8() + "</p>";
            item = ClipItem::makeText(text, std::nullopt, html);
        } else if (roll < 88) {
            item = ClipItem::makeImage(QByteArray::number(i), 200 + int(random.bounded(3000)), 150 + int(random.bounded(2000)));
            item.setImage(imageNames[i % imageNames.size()]);
        } else if (roll < 97) {
            QStringList paths;
            for (int n = 1 + int(random.bounded(3)); n > 0; --n)
                paths << QStringLiteral("/home/user/Documents/%1/report-%2.pdf").arg(Words[int(random.bounded(qsizetype(Words.size())))]).arg(i + n);
            item = ClipItem::makeFiles(paths);
        } else {
            item = ClipItem::makeColor(*ClipItem::hex(QColor::fromRgb(random.generate() | 0xFF000000)));
        }
        const auto& app = apps[int(random.bounded(qsizetype(apps.size())))];
        item.appBundleID = app.first;
        item.appName = app.second;
        item.date = now.addSecs(-qint64(i) * 97);
        item.pinned = i % 500 == 0;
        items << item;
    }
    return items;
}

qint64 residentKiB()
{
    QFile status("/proc/self/status");
    if (!status.open(QIODevice::ReadOnly)) return -1;
    for (const QByteArray& line : status.readAll().split('\n'))
        if (line.startsWith("VmRSS:")) return line.mid(6).trimmed().split(' ').first().toLongLong();
    return -1;
}

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.isEmpty() ? 0 : values[values.size() / 2];
}

double ms(const QElapsedTimer& clock) { return double(clock.nsecsElapsed()) / 1e6; }

// Counts the list's paints, to time "until the user sees it".
class PaintWatch : public QObject {
public:
    int paints = 0;
    bool eventFilter(QObject*, QEvent* event) override
    {
        if (event->type() == QEvent::Paint) ++paints;
        return false;
    }
};

struct Harness {
    fakes::FakePlatform platform;
    Defaults defaults{*platform.settings};
    ClipboardSettings settings{defaults};
    std::unique_ptr<ClipboardStore> store;

    explicit Harness(int maxItems) { defaults.set("clipboard.maxItems", maxItems + 1000); }
    double load(const QString& folder)
    {
        store = std::make_unique<ClipboardStore>(settings, *platform.pasteboard, *platform.workspace, folder);
        QElapsedTimer clock;
        clock.start();
        store->load();
        return ms(clock);
    }
};

// Child process: load the history and report the memory of a process that holds it.
int measureMemory(const QString& folder, int count)
{
    Harness harness(count);
    const qint64 before = residentKiB();
    const double loadMs = harness.load(folder);
    // What the load lets go of is let go of on other threads, within milliseconds.
    QThreadPool::globalInstance()->waitForDone();
    const qint64 after = residentKiB();
    printf("%lld %lld %lld %.1f\n", before, after, qlonglong(harness.store->items().size()), loadMs);
    return 0;
}

#ifdef ORLO_BENCH_SIMDJSON
// Orlo's hand-written reader and writer beside simdjson on the same file, in the same run.
// simdjson's reader parses, visits every value, and then builds the same items Orlo's does;
// its writer re-writes what it parsed, where Orlo's writes from the items.
void compareWithSimdjson(const QString& path, const QList<ClipItem>& items)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return;
    const QByteArray json = file.readAll();
    QList<double> ownOne, ownParts, parse, walk, built, ownWrite, rewrite;
    for (int i = 0; i < 5; ++i) {
        QElapsedTimer clock;
        clock.start();
        const bool one = ClipHistoryFile::decode(json, json.size() + 1).has_value();
        ownOne << ms(clock);
        clock.restart();
        const bool parts = ClipHistoryFile::decode(json).has_value();
        ownParts << ms(clock);
        if (!one || !parts) return;
        parse << simdjsonpeer::parse(json);
        walk << simdjsonpeer::parseAndWalk(json);
        QList<ClipItem> simdjsonItems;
        built << simdjsonpeer::parseIntoItems(json, &simdjsonItems);
        if (simdjsonItems != items) printf("  (simdjson's items differ from Orlo's)\n");
        clock.restart();
        const QByteArray written = ClipHistoryFile::encode(items);
        ownWrite << ms(clock);
        rewrite << simdjsonpeer::serialize(json);
        if (written.size() != json.size()) printf("  (the encoding differs from the file: %lld bytes)\n", qlonglong(written.size()));
    }
    const double own = median(ownOne);
    printf("  JSON read, Orlo, one thread  %8.1f ms (median of 5), items built\n", own);
    printf("  JSON read, Orlo, in parts    %8.1f ms, items built\n", median(ownParts));
    printf("  JSON read, simdjson parse    %8.1f ms (Orlo one thread / simdjson: %.2f)\n", median(parse), own / median(parse));
    printf("  JSON read, simdjson + walk   %8.1f ms (Orlo one thread / simdjson: %.2f)\n", median(walk), own / median(walk));
    printf("  JSON read, simdjson + items  %8.1f ms, the same items built (Orlo one thread / simdjson: %.2f)\n", median(built),
           own / median(built));
    printf("  JSON write, Orlo             %8.1f ms from the items\n", median(ownWrite));
    printf("  JSON write, simdjson         %8.1f ms re-writing its parse (Orlo / simdjson: %.2f)\n", median(rewrite),
           median(ownWrite) / median(rewrite));
}
#endif

void run(int count, const QString& program)
{
    QTemporaryDir dir;
    const QString folder = dir.filePath("Clipboard");
    QDir().mkpath(folder + "/images");
    QStringList imageNames;
    for (int i = 0; i < 40; ++i) {
        QImage image(320, 200, QImage::Format_RGB32);
        image.fill(QColor::fromHsv(i * 9, 160, 220));
        imageNames << QStringLiteral("IMAGE-%1.png").arg(i);
        image.save(folder + "/images/" + imageNames.last());
    }
    const QList<ClipItem> items = generate(count, imageNames);
    ClipHistoryFile(folder + "/history.json").write(items, nullptr);
    const qint64 fileBytes = QFileInfo(folder + "/history.json").size();
    qint64 textChars = 0;
    for (const ClipItem& item : items) textChars += item.text ? item.text->size() : 0;
    printf("\n%d items (history.json %.1f MB, %.0f characters of text per item on average)\n", count, fileBytes / 1e6,
           double(textChars) / count);

    Harness harness(count);
    QList<double> loads, saves;
    for (int i = 0; i < 3; ++i) loads << harness.load(folder);
    for (int i = 0; i < 3; ++i) {
        QElapsedTimer clock;
        clock.start();
        harness.store->saveNow();
        saves << ms(clock);
    }
    printf("  load                         %8.1f ms (median of 3)\n", median(loads));
    printf("  save                         %8.1f ms (median of 3)\n", median(saves));
#ifdef ORLO_BENCH_SIMDJSON
    if (count >= 100'000) compareWithSimdjson(folder + "/history.json", harness.store->items());
#endif

    // The picker: from the shortcut to the first paint of its rows.
    auto& p = harness.platform;
    p.fakeScreens->list = {ScreenInfo{{0, 0, 1920, 1080}, {0, 0, 1920, 1080}, 0, false, {}}};
    ClipboardPicker picker(*harness.store, {*p.keyboardLayout, *p.screens, *p.workspace});
    picker.prepare();  // as the module does once Orlo has started
    PaintWatch watch;
    QList<double> opens;
    for (int i = 0; i < 6; ++i) {
        QElapsedTimer clock;
        clock.start();
        picker.show();
        if (i == 0) picker.panel()->list()->viewport()->installEventFilter(&watch);
        const int paints = watch.paints;
        while (watch.paints == paints && clock.elapsed() < 5000) QCoreApplication::processEvents();
        opens << ms(clock);
        picker.close();
        QCoreApplication::processEvents();
    }
    printf("  picker open to first paint   %8.1f ms first time, %.1f ms after (median of 5)\n", opens.first(),
           median(opens.mid(1)));

    // The same after a copy, which changes the rows.
    QList<double> changedOpens;
    for (int i = 0; i < 5; ++i) {
        p.fakePasteboard->copyText(QStringLiteral("copied before opening %1").arg(i));
        harness.store->poll();
        QElapsedTimer clock;
        clock.start();
        picker.show();
        const int paints = watch.paints;
        while (watch.paints == paints && clock.elapsed() < 5000) QCoreApplication::processEvents();
        changedOpens << ms(clock);
        picker.close();
        QCoreApplication::processEvents();
    }
    printf("  picker open after a copy     %8.1f ms median of 5, %.1f ms worst\n", median(changedOpens),
           *std::max_element(changedOpens.begin(), changedOpens.end()));

    // Copying again what was copied long ago brings it to the top.
    QList<double> recopies;
    for (int i = 0; i < 5; ++i) {
        const ClipItem& oldest = harness.store->items().last();
        const ClipItem& middle = harness.store->items().at(harness.store->items().size() / 2);
        const ClipItem& chosen = i % 2 ? middle : oldest;
        QElapsedTimer clock;
        clock.start();
        harness.store->copyToPasteboard(chosen, false);
        recopies << ms(clock);
    }
    printf("  choosing an old item again   %8.1f ms median of 5 (the oldest and the middle one), %.1f ms worst\n",
           median(recopies), *std::max_element(recopies.begin(), recopies.end()));

    // Typing a search: each key until its rows are painted, and until every match is found.
    // The save the copies above scheduled is done first: on two cores its thread would
    // otherwise share the processor with the search it is not part of.
    harness.store->saveNow();
    picker.show();
    QCoreApplication::processEvents();
    QLineEdit* search = picker.panel()->searchField();
    PickerModel& model = picker.model();
    QList<double> keys, complete;
    for (const QString& query : {QStringLiteral("meeting tomorrow"), QStringLiteral("zürich"), QStringLiteral("qqq")}) {
        search->clear();
        QCoreApplication::processEvents();
        for (int n = 1; n <= query.size(); ++n) {
            QElapsedTimer clock;
            clock.start();
            search->setText(query.left(n));
            picker.panel()->list()->viewport()->repaint();
            keys << ms(clock);
            while (model.isFiltering()) QCoreApplication::processEvents();
            complete << ms(clock);
            if (qEnvironmentVariableIsSet("CLIP_BENCH_VERBOSE"))
                fprintf(stderr, "    %s %.1f painted, %.1f all found\n", qPrintable(query.left(n)), keys.last(), complete.last());
        }
    }
    std::sort(keys.begin(), keys.end());
    std::sort(complete.begin(), complete.end());
    printf("  filtering per keystroke      %8.1f ms median, %.1f ms worst, until its rows are painted (%lld keys)\n",
           median(keys), keys.last(), qlonglong(keys.size()));
    printf("                               %8.1f ms median, %.1f ms worst, until every match is found\n",
           median(complete), complete.last());
    picker.close();

    // A 1 MB text copied in another application.
    p.fakePasteboard->copyText(words(*QRandomGenerator::global(), 1'000'000));
    QElapsedTimer clock;
    clock.start();
    harness.store->poll();
    const double capture = ms(clock);
    clock.restart();
    harness.store->saveNow();
    printf("  capture of a 1 MB text       %8.1f ms (then %.1f ms to save)\n", capture, ms(clock));

    // As at start: the first load of a process, whose memory no earlier history has used.
    // A single process is at the mercy of the machine's other work: five are run.
    QList<double> freshLoads, residentMB, baseMB;
    for (int i = 0; i < 5; ++i) {
        QProcess child;
        child.start(program, {"--memory", folder, QString::number(count)});
        child.waitForFinished(120000);
        const QList<QByteArray> figures = child.readAllStandardOutput().trimmed().split(' ');
        if (figures.size() != 4) continue;
        baseMB << figures[0].toDouble() / 1024;
        residentMB << figures[1].toDouble() / 1024;
        freshLoads << figures[3].toDouble();
    }
    if (freshLoads.isEmpty()) return;
    std::sort(freshLoads.begin(), freshLoads.end());
    printf("  resident memory              %8.1f MB with the history loaded (%.1f MB before loading it; medians of 5)\n",
           median(residentMB), median(baseMB));
    printf("  load in a new process        %8.1f ms median of 5, %.1f ms best, %.1f ms worst\n", median(freshLoads),
           freshLoads.first(), freshLoads.last());
}

}  // namespace

int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    // The offscreen platform says that it cannot raise windows, once per opening.
    qInstallMessageHandler([](QtMsgType type, const QMessageLogContext&, const QString& message) {
        if (type != QtWarningMsg || !message.contains("does not support")) fprintf(stderr, "%s\n", qPrintable(message));
    });
    QApplication app(argc, argv);
    const QStringList args = app.arguments();
    if (args.size() == 4 && args[1] == "--memory") return measureMemory(args[2], args[3].toInt());
    // A history to try Orlo with: orlo_bench_clipboard --generate COUNT FOLDER
    if (args.size() == 4 && args[1] == "--generate") {
        QDir().mkpath(args[3]);
        return ClipHistoryFile(args[3] + "/history.json").write(generate(args[2].toInt(), {"IMAGE-0.png"}), nullptr) ? 0 : 1;
    }
    printf("Clipboard history benchmark\n");
    // A hundred items beside the long histories: what a copy costs must not grow with the history.
    for (int count : {100, 10000, 100000}) run(count, QCoreApplication::applicationFilePath());
    return 0;
}
