// Orlo as its Debian package installs it: taken out of the package into a folder of its
// own and started from there, with the desktop's data folders leading into that folder.
#include "StatusNotifierWatcher.h"
#include "VirtualSession.h"
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDBusVariant>
#include <QDir>
#include <QProcess>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using orlo::testing::OrloProcess;
using orlo::testing::StatusNotifierWatcher;
using orlo::testing::VirtualSession;

namespace {

class InstallSession : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(root.isValid());
        QProcess extract;
        extract.start("dpkg-deb", {"-x", ORLO_DEB_FILE, root.path()});
        ASSERT_TRUE(extract.waitForFinished(30000));
        ASSERT_EQ(extract.exitCode(), 0) << extract.readAllStandardError().constData();
        ASSERT_TRUE(QFile::exists(program())) << "the package holds no usr/bin/orlo";
    }

    QString program() const { return root.filePath("usr/bin/orlo"); }
    // The installed data first, then the system's, as a desktop session lists them.
    QString dataDirs() const { return root.filePath("usr/share") + ":/usr/local/share:/usr/share"; }

    // A property of the StatusNotifierItem a watcher was given, read over the session's bus.
    static QVariant itemProperty(const VirtualSession& session, const QString& item, const QString& name)
    {
        // Items register as "service" or "service/path".
        const int slash = item.indexOf('/');
        const QString service = slash < 0 ? item : item.left(slash);
        const QString path = slash < 0 ? QStringLiteral("/StatusNotifierItem") : item.mid(slash);
        QDBusConnection bus = QDBusConnection::connectToBus(session.busAddress(), "install-test-" + session.busAddress());
        QDBusMessage get = QDBusMessage::createMethodCall(service, path, "org.freedesktop.DBus.Properties", "Get");
        get << QStringLiteral("org.kde.StatusNotifierItem") << name;
        const QDBusReply<QDBusVariant> reply = bus.call(get, QDBus::Block, 5000);
        return reply.isValid() ? reply.value().variant() : QVariant();
    }

    // How many pixels of a window's _NET_WM_ICON images are clearly blue: the installed
    // application icon is, the bundled fallback is grey.
    static int blueIconPixels(VirtualSession& session, const QString& window)
    {
        const QString text = session.output("xprop", {"-id", window, "-f", "_NET_WM_ICON", "32c", "=$0+", "_NET_WM_ICON"});
        const QString values = text.section('=', 1);
        QList<quint32> words;
        for (const QString& word : values.split(',', Qt::SkipEmptyParts)) words << word.trimmed().toUInt();
        int blue = 0;
        for (qsizetype at = 0; at + 2 <= words.size();) {
            const qsizetype pixels = qsizetype(words[at]) * words[at + 1];
            for (qsizetype p = at + 2; p < at + 2 + pixels && p < words.size(); ++p) {
                const quint32 argb = words[p];
                const int a = argb >> 24, r = (argb >> 16) & 0xff, b = argb & 0xff;
                if (a > 200 && b > r + 80) ++blue;
            }
            at += 2 + pixels;
        }
        return blue;
    }

    QTemporaryDir root;
};

}  // namespace

TEST_F(InstallSession, TheTrayItemNamesTheInstalledSymbolicIconAndFallsBackWithoutIt)
{
    VirtualSession session;
    session.setSystemTray(false);
    ASSERT_TRUE(session.start()) << qPrintable(session.error());
    StatusNotifierWatcher watcher(session.busAddress());
    ASSERT_TRUE(watcher.isRegistered());
    {
        QProcessEnvironment installed;
        installed.insert("XDG_DATA_DIRS", dataDirs());
        OrloProcess orlo(program(), session, {}, installed);
        ASSERT_TRUE(VirtualSession::waitFor([&] { return !watcher.items.isEmpty(); })) << qPrintable(orlo.log());
        EXPECT_EQ(itemProperty(session, watcher.items.last(), "IconName").toString(), "app.orlo.Orlo-symbolic");
    }
    // Where the icon theme has no Orlo icon, the tray shows the bundled symbol as pixels and
    // names no icon the panel could not find.
    watcher.items.clear();
    QProcessEnvironment bare;
    bare.insert("XDG_DATA_DIRS", "/usr/local/share:/usr/share");
    OrloProcess orlo(program(), session, {}, bare);
    ASSERT_TRUE(VirtualSession::waitFor([&] { return !watcher.items.isEmpty(); })) << qPrintable(orlo.log());
    EXPECT_FALSE(itemProperty(session, watcher.items.last(), "IconName").toString().contains("app.orlo.Orlo"));
}

TEST_F(InstallSession, TheTrayAndTheSettingsWindowShowTheInstalledIcons)
{
    VirtualSession session;
    ASSERT_TRUE(session.start()) << qPrintable(session.error());
    session.setVariable("XDG_DATA_DIRS", dataDirs());
    OrloProcess orlo(program(), session);
    ASSERT_TRUE(orlo.waitForTray()) << qPrintable(orlo.log());

    // Starting the installed orlo again opens the running one's settings.
    QString output;
    EXPECT_EQ(session.run(program(), {}, &output), 0) << qPrintable(output);
    QStringList windows;
    ASSERT_TRUE(VirtualSession::waitFor([&] {
        windows = session.findWindows("^Orlo Settings$");
        return !windows.isEmpty();
    })) << qPrintable(orlo.log());
    EXPECT_TRUE(VirtualSession::waitFor([&] { return blueIconPixels(session, windows.first()) > 0; }))
        << "the settings window's icon is not the installed application icon";
    session.screenshot(VirtualSession::screenshotPath("installed-icons.png"));
}
