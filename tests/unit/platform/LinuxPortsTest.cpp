#include "WriteFile.h"
#include "platform/linux/DesktopEntries.h"
#include "platform/linux/SandboxedApp.h"
#include "platform/linux/XdgLoginItem.h"
#include "platform/linux/KeyCodeMap.h"
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QTemporaryDir>
#include <gtest/gtest.h>

using namespace orlo;

TEST(KeyCodeMap, MapsCanonicalCodesToEvdevAndBack)
{
    EXPECT_EQ(xKeyCode(0), 38);    // A
    EXPECT_EQ(xKeyCode(48), 23);   // Tab
    EXPECT_EQ(xKeyCode(123), 113); // Left
    EXPECT_EQ(xKeyCode(58), 64);   // Option: Alt_L
    EXPECT_EQ(xKeyCode(55), 133);  // Command: Super_L
    EXPECT_FALSE(xKeyCode(52).has_value());
    for (quint32 code = 0; code < 128; ++code)
        if (auto x = xKeyCode(code)) {
            EXPECT_EQ(canonicalKeyCode(*x), code) << code;
        }
}


TEST(DesktopEntries, FindsApplicationsByIdWindowClassAndLastIdPart)
{
    QTemporaryDir user, system;
    writeFile(user.filePath("applications/org.keepassxc.KeePassXC.desktop"),
              "[Desktop Entry]\nType=Application\nName=KeePassXC\nExec=sh\n");
    writeFile(system.filePath("applications/org.keepassxc.KeePassXC.desktop"), "[Desktop Entry]\nType=Application\nName=Other\n");
    writeFile(system.filePath("applications/code.desktop"),
              "[Desktop Entry]\nType=Application\nName=Visual\\sEditor\nIcon=code\nStartupWMClass=Code-Main\n"
              "[Desktop Action new]\nName=New\n");
    writeFile(system.filePath("applications/debian-printf.desktop"), "[Desktop Entry]\nType=Application\nName=Printf\nExec=printf %U\n");
    writeFile(system.filePath("applications/xterm-like.desktop"),
              "[Desktop Entry]\nType=Application\nName=Other\nExec=env A=1 /usr/bin/code-main\n");
    DesktopEntries entries({user.path(), system.path()});
    const auto* kp = entries.find({"", "KeePassXC", "keepassxc"});
    ASSERT_TRUE(kp);
    EXPECT_EQ(kp->id, QString("org.keepassxc.KeePassXC"));
    EXPECT_EQ(kp->name, QString("KeePassXC"));  // the user's own entry wins
    const auto* code = entries.find({"code-main"});
    ASSERT_TRUE(code);
    EXPECT_EQ(code->name, QString("Visual Editor"));  // escapes decoded
    EXPECT_EQ(code->icon, QString("code"));
    ASSERT_TRUE(entries.find({"", "Printf", "printf"}));
    EXPECT_EQ(entries.find({"", "Printf", "printf"})->id, QString("debian-printf"));  // by the program it runs
    EXPECT_FALSE(entries.find({"nothing", ""}));
}

TEST(DesktopEntries, HiddenMissingAndOtherDesktopsEntriesNameNothing)
{
    ASSERT_FALSE(qgetenv("XDG_CURRENT_DESKTOP").contains("KDE"));
    QTemporaryDir user, system;
    // The user hid the system's entry: it names nothing, not even through the system's copy.
    writeFile(user.filePath("applications/org.example.Hidden.desktop"), "[Desktop Entry]\nType=Application\nName=Hidden\nHidden=true\n");
    writeFile(system.filePath("applications/org.example.Hidden.desktop"), "[Desktop Entry]\nType=Application\nName=Shown\n");
    writeFile(system.filePath("applications/gone.desktop"),
              "[Desktop Entry]\nType=Application\nName=Gone\nTryExec=/nonexistent/orlo-no-such-program\n");
    writeFile(system.filePath("applications/kde-only.desktop"), "[Desktop Entry]\nType=Application\nName=KDE Only\nOnlyShowIn=KDE;\n");
    writeFile(system.filePath("applications/link.desktop"), "[Desktop Entry]\nType=Link\nName=Link\nURL=https://example.org\n");
    DesktopEntries entries({user.path(), system.path()});
    for (const char* id : {"org.example.Hidden", "gone", "kde-only", "link"}) {
        EXPECT_FALSE(entries.find({id})) << id;
        EXPECT_FALSE(entries.byId(id)) << id;
    }
}

TEST(SandboxedApp, FlatpakAndSnapIdsComeFromTheProcessesUnit)
{
    EXPECT_EQ(sandboxedAppId("0::/user.slice/user-1000.slice/user@1000.service/app.slice/app-flatpak-org.gnome.Calculator-81731.scope\n"),
              QString("org.gnome.Calculator"));
    EXPECT_EQ(sandboxedAppId("1:name=systemd:/x\n0::/user.slice/user@1000.service/app.slice/"
                             "snap.firefox.firefox-4a1f5c3e-7d2b-4c1e-9f0a-1b2c3d4e5f60.scope\n"),
              QString("firefox_firefox"));
    // Units that merely look alike, or a process started some other way, name nothing.
    for (const char* cgroup : {"0::/user.slice/user@1000.service/app.slice/app-gnome-org.gnome.Calculator-81731.scope",
                               "0::/user.slice/app-flatpak-a/b-1.scope", "0::/snap.firefox.firefox-1234.scope", "0::/init.scope", ""})
        EXPECT_EQ(sandboxedAppId(cgroup), QString()) << cgroup;
}

// The autostart entry is named after the desktop id the application gives Qt.
class XdgLoginItemTest : public ::testing::Test {
protected:
    void SetUp() override { QGuiApplication::setDesktopFileName("app.orlo.Orlo"); }
    void TearDown() override { QGuiApplication::setDesktopFileName(saved_); }
    QByteArray read(const QString& path)
    {
        QFile f(path);
        return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
    }

    QTemporaryDir dir;
    const QString path = dir.filePath("autostart/app.orlo.Orlo.desktop");
    const QString legacy = dir.filePath("autostart/orlo.desktop");

private:
    QString saved_ = QGuiApplication::desktopFileName();
};

TEST_F(XdgLoginItemTest, WritesAndRemovesTheEntryNamedAfterTheDesktopId)
{
    EXPECT_TRUE(XdgLoginItem::defaultPath().endsWith("/autostart/app.orlo.Orlo.desktop"));
    XdgLoginItem item(path, "/opt/my apps/orlo");
    EXPECT_EQ(item.status(), LoginItemStatus::NotRegistered);
    ASSERT_TRUE(item.registerItem());
    EXPECT_EQ(item.status(), LoginItemStatus::Enabled);
    const QByteArray entry = read(path);
    EXPECT_TRUE(entry.contains("Exec=\"/opt/my apps/orlo\"\n"));
    EXPECT_TRUE(entry.contains("Icon=app.orlo.Orlo\n"));
    ASSERT_TRUE(item.unregisterItem());
    EXPECT_FALSE(QFile::exists(path));
    EXPECT_TRUE(item.unregisterItem());
}

TEST_F(XdgLoginItemTest, AnEntryUnderTheOldNameCountsUntilRegisteringOrUnregisteringRemovesIt)
{
    writeFile(legacy, "[Desktop Entry]\nType=Application\nExec=orlo\n");
    XdgLoginItem item(path, "/usr/bin/orlo");
    EXPECT_EQ(item.status(), LoginItemStatus::Enabled);
    ASSERT_TRUE(item.registerItem());
    EXPECT_FALSE(QFile::exists(legacy));
    EXPECT_TRUE(QFile::exists(path));

    writeFile(legacy, "[Desktop Entry]\nType=Application\nExec=orlo\n");
    ASSERT_TRUE(item.unregisterItem());
    EXPECT_FALSE(QFile::exists(legacy));
    EXPECT_EQ(item.status(), LoginItemStatus::NotRegistered);

    // An item that is itself named orlo.desktop keeps its own entry.
    XdgLoginItem old(legacy, "/usr/bin/orlo");
    ASSERT_TRUE(old.registerItem());
    EXPECT_TRUE(QFile::exists(legacy));
}
