// Clipboard history in a private X session: real clipboard owners of other processes, the
// real Orlo, and its picker driven from the keyboard.
#include "ClipFaultRun.h"
#include "VirtualSession.h"
#include <QDir>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QThread>
#include <gtest/gtest.h>

using orlo::testing::OrloProcess;
using orlo::testing::VirtualSession;

namespace {

class ClipSession : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_TRUE(session.start()) << qPrintable(session.error()); }

    QString folder() const { return session.dataHome() + "/Orlo/Clipboard"; }

    void startOrlo()
    {
        orlo = std::make_unique<OrloProcess>(session);
        EXPECT_TRUE(orlo->waitForLine("started clipboard")) << qPrintable(orlo->log());
    }
    int seenCopies() { return int(orlo->log().count(QRegularExpression("copy (recorded|ignored)"))); }

    // A window of another process, in front; its output tells what reached its line edit.
    QProcess* window(const QString& title, const QString& program = VirtualSession::builtProgram("orlo-test-window"))
    {
        QProcess* p = session.launch(program, {title});
        QString id;
        EXPECT_TRUE(VirtualSession::waitFor([&] {
            const auto match = QRegularExpression("ready (\\d+)").match(QString::fromLocal8Bit(p->peek(1 << 16)));
            id = match.captured(1);
            return match.hasMatch();
        }));
        activate(id);
        return p;
    }
    void activate(const QString& windowId)
    {
        session.run("xdotool", {"windowactivate", "--sync", windowId});
        EXPECT_TRUE(VirtualSession::waitFor([&] { return session.output("xdotool", {"getactivewindow"}) == windowId; }));
    }
    static bool printed(QProcess* p, const QString& line) { return QString::fromLocal8Bit(p->peek(1 << 20)).contains(line); }

    // xclip owns the clipboard with one target until another client takes it. Orlo polls:
    // wait until it has seen the copy, as a user copies one thing at a time.
    void xclip(const QByteArray& data, const QString& type = "UTF8_STRING", bool waitForOrlo = true)
    {
        const int before = seenCopies();
        QProcess* p = session.launch("xclip", {"-quiet", "-selection", "clipboard", "-t", type});
        p->write(data);
        p->waitForBytesWritten();
        p->closeWriteChannel();
        // xclip owns the selection once it has read all its input.
        const bool text = type == "UTF8_STRING";
        EXPECT_TRUE(VirtualSession::waitFor([&] {
            return text ? session.output("xclip", {"-o", "-selection", "clipboard"}) == data.trimmed() : clipboardTargets().contains(type);
        }));
        if (waitForOrlo) {
            EXPECT_TRUE(VirtualSession::waitFor([&] { return seenCopies() > before; })) << qPrintable(orlo->log());
        }
    }
    // Orlo's own helper, for several targets at once.
    void offer(const QStringList& args)
    {
        const int before = seenCopies();
        QProcess* p = session.launch(VirtualSession::builtProgram("orlo-test-clipboard"), args);
        EXPECT_TRUE(VirtualSession::waitFor([&] { return printed(p, "ready"); }));
        EXPECT_TRUE(VirtualSession::waitFor([&] { return seenCopies() > before; })) << qPrintable(orlo->log());
    }
    QString clipboardTargets() { return session.output("xclip", {"-o", "-selection", "clipboard", "-t", "TARGETS"}); }

    QJsonArray history() const
    {
        QFile file(folder() + "/history.json");
        if (!file.open(QIODevice::ReadOnly)) return {};
        return QJsonDocument::fromJson(file.readAll()).array();
    }
    QStringList historyTexts() const
    {
        QStringList texts;
        for (const QJsonValue& item : history()) texts << item["text"].toString();
        return texts;
    }
    bool waitForTexts(const QStringList& expected, int timeoutMs = 5000)
    {
        return VirtualSession::waitFor([&] { return historyTexts() == expected; }, timeoutMs);
    }

    VirtualSession session;
    std::unique_ptr<OrloProcess> orlo;
};

}  // namespace

TEST_F(ClipSession, RecordsEachKindOfCopyWithItsSourceApplication)
{
    startOrlo();
    window("Editor");

    xclip("plain words");
    ASSERT_TRUE(orlo->waitForLine("copy recorded: text")) << qPrintable(orlo->log());
    offer({"--text", "Hello rich", "--html", "<b>Hello</b> rich"});
    ASSERT_TRUE(orlo->waitForLine("copy recorded: text(.|\\n)*copy recorded: text"));
    QImage image(64, 48, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    const QString png = session.home() + "/shot.png";
    image.save(png);
    QFile pngFile(png);
    pngFile.open(QIODevice::ReadOnly);
    const QByteArray pngBytes = pngFile.readAll();
    xclip(pngBytes, "image/png");
    ASSERT_TRUE(orlo->waitForLine("copy recorded: image"));
    xclip("file:///etc/hosts\r\nfile:///etc/passwd\r\n", "text/uri-list");
    ASSERT_TRUE(orlo->waitForLine("copy recorded: files"));
    // The same text twice more: still one entry, now the newest.
    xclip("plain words");
    xclip("other words");
    xclip("plain words");
    ASSERT_TRUE(waitForTexts({"plain words", "other words", "/etc/hosts\n/etc/passwd", "", "Hello rich"})) << qPrintable(orlo->log());

    const QJsonArray items = history();
    for (const QJsonValue& item : items) {
        EXPECT_FALSE(item["appBundleID"].toString().isEmpty());
        EXPECT_FALSE(item["appName"].toString().isEmpty());
    }
    EXPECT_EQ(items[0]["kind"], "text");
    EXPECT_EQ(items[2]["kind"], "files");
    EXPECT_EQ(items[2]["files"].toArray(), (QJsonArray{"/etc/hosts", "/etc/passwd"}));
    EXPECT_EQ(items[4]["kind"], "text");
    EXPECT_EQ(QByteArray::fromBase64(items[4]["html"].toString().toLatin1()), "<b>Hello</b> rich");

    const QJsonValue shot = items[3];
    EXPECT_EQ(shot["kind"], "image");
    EXPECT_EQ(shot["imageWidth"], 64);
    EXPECT_EQ(shot["imageHeight"], 48);
    QFile stored(folder() + "/images/" + shot["image"].toString());
    ASSERT_TRUE(stored.open(QIODevice::ReadOnly));
    EXPECT_EQ(stored.readAll(), pngBytes);
    for (const QString& path : {folder() + "/..", folder(), folder() + "/images", folder() + "/history.json", stored.fileName()})
        EXPECT_EQ(QFile::permissions(path) & 0x0077, 0) << qPrintable(path);
}

TEST_F(ClipSession, PasswordsAndCopiesFromExcludedApplicationsAreNeverRecorded)
{
    // KeePassXC as it installs itself: a desktop file naming its window class.
    const QString keepass = session.home() + "/keepassxc";
    ASSERT_TRUE(QFile::link(VirtualSession::builtProgram("orlo-test-window"), keepass));
    QDir().mkpath(session.dataHome() + "/applications");
    QFile entry(session.dataHome() + "/applications/org.keepassxc.KeePassXC.desktop");
    ASSERT_TRUE(entry.open(QIODevice::WriteOnly));
    entry.write("[Desktop Entry]\nType=Application\nName=KeePassXC\nExec=" + keepass.toUtf8() + "\nStartupWMClass=keepassxc\n");
    entry.close();

    startOrlo();
    window("Editor");
    offer({"--text", "s3cret", "--type", "x-kde-passwordManagerHint=secret"});
    ASSERT_TRUE(orlo->waitForLine("copy ignored: marked x-kde-passwordManagerHint")) << qPrintable(orlo->log());
    offer({"--text", "also secret", "--type", "org.nspasteboard.ConcealedType="});
    ASSERT_TRUE(orlo->waitForLine("copy ignored: marked org.nspasteboard.ConcealedType"));

    window("Passwords", keepass);
    xclip("typed in the password manager");
    ASSERT_TRUE(orlo->waitForLine("copy ignored: made in org.keepassxc.KeePassXC")) << qPrintable(orlo->log());

    window("Editor 2");
    xclip("ordinary");
    ASSERT_TRUE(waitForTexts({"ordinary"})) << qPrintable(orlo->log());
}

TEST_F(ClipSession, HistorySurvivesARestartEvenRightAfterACopy)
{
    startOrlo();
    window("Editor");
    xclip("kept across restarts");
    ASSERT_TRUE(waitForTexts({"kept across restarts"}));

    // Copied 0.2 s before SIGTERM: before the next poll, within the save's one-second delay.
    xclip("copied just before the end", "UTF8_STRING", false);
    QThread::msleep(200);
    orlo->quit();
    EXPECT_EQ(orlo->process().exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(historyTexts(), (QStringList{"copied just before the end", "kept across restarts"})) << qPrintable(orlo->log());

    startOrlo();
    EXPECT_TRUE(orlo->waitForLine("history loaded: 2 items")) << qPrintable(orlo->log());
    xclip("after the restart");
    EXPECT_TRUE(waitForTexts({"after the restart", "copied just before the end", "kept across restarts"}));
}

TEST_F(ClipSession, PickerPastesTheChosenItemWhereTheUserWas)
{
    startOrlo();
    QProcess* editor = window("Editor");
    for (const char* text : {"alpha one", "beta two", "gamma three"}) xclip(text);
    ASSERT_TRUE(waitForTexts({"gamma three", "beta two", "alpha one"}));

    // The shortcut opens the picker, and closes it again.
    session.key("super+shift+v");
    ASSERT_TRUE(orlo->waitForLine("picker shown")) << qPrintable(orlo->log());
    session.key("super+shift+v");
    ASSERT_TRUE(orlo->waitForLine("picker closed"));

    // A click elsewhere closes it.
    session.key("super+shift+v");
    ASSERT_TRUE(orlo->waitForLine("(picker holds the keyboard(.|\\n)*){2}"));
    session.click(5, 5);
    ASSERT_TRUE(orlo->waitForLine("(picker closed(.|\\n)*){2}")) << qPrintable(orlo->log());

    // Once it holds the keyboard, keys reach it whenever the window manager would have given
    // it the focus; Return pastes into the window that was in front.
    session.key("super+shift+v");
    ASSERT_TRUE(orlo->waitForLine("(picker shown(.|\\n)*){3}picker holds the keyboard"));
    session.run("xdotool", {"type", "--delay", "20", "beta"});
    session.key("Return");
    ASSERT_TRUE(VirtualSession::waitFor([&] { return printed(editor, "text beta two"); })) << qPrintable(orlo->log());
    EXPECT_EQ(session.output("xclip", {"-o", "-selection", "clipboard"}), "beta two");
    EXPECT_TRUE(waitForTexts({"beta two", "gamma three", "alpha one"}));

    // Typed so fast that the shortcut's V is still down: the keys reach the search all the same.
    session.run("xdotool", {"keydown", "super+shift+v"});
    ASSERT_TRUE(orlo->waitForLine("(picker shown(.|\\n)*){4}"));
    session.run("xdotool", {"keyup", "super+shift"});
    session.run("xdotool", {"key", "e"});
    session.run("xdotool", {"keyup", "v"});
    ASSERT_TRUE(orlo->waitForLine("(picker shown(.|\\n)*){4}picker holds the keyboard"));
    // "ee" is in "gamma three" alone; "e" alone would choose "beta two", the first row.
    session.key("e");
    session.key("Return");
    ASSERT_TRUE(VirtualSession::waitFor([&] { return printed(editor, "text beta twogamma three"); })) << qPrintable(orlo->log());

    // A terminal that pastes on Control-V; digit 3 chooses the third row.
    const QString out = session.home() + "/pasted.txt";
    QProcess* xterm = session.launch("xterm", {"-title", "Terminal", "-xrm", "*VT100.translations: #override Ctrl <Key>v: insert-selection(CLIPBOARD)",
                                               "-e", "sh", "-c", "stty -icanon; cat > " + out});
    ASSERT_TRUE(VirtualSession::waitFor([&] { return !session.findWindows("^Terminal$").isEmpty(); }));
    activate(session.findWindows("^Terminal$").first());
    session.key("super+shift+v");
    ASSERT_TRUE(orlo->waitForLine("(picker shown(.|\\n)*){5}picker holds the keyboard"));
    session.key("3");
    EXPECT_TRUE(VirtualSession::waitFor([&] {
        QFile f(out);
        return f.open(QIODevice::ReadOnly) && f.readAll() == "alpha one";
    })) << qPrintable(orlo->log());
    xterm->kill();
}

// Scaled by two, Qt gives the monitor on the right an origin of its own: the picker still
// opens by the pointer there, kept inside that monitor at its far corner.
TEST_F(ClipSession, ScaledPickerOpensByThePointerOnTheSecondMonitor)
{
    QProcessEnvironment scaled;
    scaled.insert("QT_SCALE_FACTOR", "2");
    orlo = std::make_unique<OrloProcess>(session, QStringList{}, scaled);
    ASSERT_TRUE(orlo->waitForLine("started clipboard")) << qPrintable(orlo->log());
    const QRect right(1440, 0, 3440, 1440);
    session.mouseMove(4800, 1400);
    session.key("super+shift+v");
    ASSERT_TRUE(orlo->waitForLine("picker shown")) << qPrintable(orlo->log());
    QString picker;
    ASSERT_TRUE(VirtualSession::waitFor([&] { return !(picker = session.findWindows("^Orlo Clipboard$").value(0)).isEmpty(); }));
    QRect at;
    VirtualSession::waitFor([&] { at = session.windowGeometry(picker); return right.contains(at); }, 3000);
    EXPECT_TRUE(right.contains(at)) << at.x() << "," << at.y() << " " << at.width() << "x" << at.height();
    EXPECT_GE(at.right(), 4880 - 2 * 8 - 2) << "as far into the corner as its margin lets it";
    session.key("Escape");
}

TEST_F(ClipSession, WithoutAutomaticPastingChoosingOnlyCopies)
{
    QDir().mkpath(session.configHome() + "/Orlo");
    QFile settings(session.configHome() + "/Orlo/settings.json");
    ASSERT_TRUE(settings.open(QIODevice::WriteOnly));
    settings.write("{\"clipboard.autoPaste\": false}");
    settings.close();

    startOrlo();
    QProcess* editor = window("Editor");
    xclip("only copied");
    xclip("newest");
    ASSERT_TRUE(waitForTexts({"newest", "only copied"}));
    session.key("super+shift+v");
    ASSERT_TRUE(orlo->waitForLine("picker shown(.|\\n)*picker holds the keyboard"));
    session.key("Down");
    session.key("Return");
    ASSERT_TRUE(orlo->waitForLine("toast: Copied")) << qPrintable(orlo->log());
    EXPECT_EQ(session.output("xclip", {"-o", "-selection", "clipboard"}), "only copied");
    // Long enough for a paste keystroke to have arrived, had one been sent.
    QThread::msleep(400);
    EXPECT_FALSE(printed(editor, "key V"));
    EXPECT_FALSE(printed(editor, "text "));
    EXPECT_FALSE(orlo->log().contains("paste keystroke"));
}

TEST_F(ClipSession, KilledAtRandomMomentsItKeepsEveryCopyOlderThanTheSaveDelay)
{
    orlo::testing::ClipFaultRun run(session);
    const auto figures = run.run(10, 7);
    ASSERT_TRUE(figures.failure.isEmpty()) << qPrintable(figures.failure);
    EXPECT_EQ(figures.cycles, 10);
    EXPECT_GT(figures.due, 0);
    EXPECT_EQ(figures.lost, 0) << figures.copies << " copies, " << figures.due << " due";
}
