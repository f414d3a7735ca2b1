// The X11 window catalog under a real window manager: which application each window belongs
// to and the titles programs set, with the test's own X connection playing the programs.
#include "VirtualSession.h"
#include "platform/x11/X11WindowCatalog.h"
#include "platform/x11/X11Workspace.h"
#include "platform/x11/XConnection.h"
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <gtest/gtest.h>
#include <unistd.h>

using namespace orlo;
using orlo::testing::VirtualSession;

namespace {

class WindowCatalogSession : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(session.start()) << qPrintable(session.error());
        savedDataHome = qgetenv("XDG_DATA_HOME");
        qputenv("XDG_DATA_HOME", session.dataHome().toLocal8Bit());
        writeEntry("office-writer", "[Desktop Entry]\nType=Application\nName=Writer\nExec=sh -c writer\nStartupWMClass=office-writer\n");
        writeEntry("office-calc", "[Desktop Entry]\nType=Application\nName=Spreadsheet\nExec=sh -c calc\nStartupWMClass=office-calc\n");
        x = x11::XConnection::open(session.display().toLocal8Bit().constData(), nullptr);
        ASSERT_TRUE(x);
        workspace = std::make_unique<x11::X11Workspace>(*x);
        catalog = std::make_unique<x11::X11WindowCatalog>(*x, *workspace);
    }
    void TearDown() override
    {
        catalog.reset();
        workspace.reset();
        x.reset();
        qputenv("XDG_DATA_HOME", savedDataHome);
    }
    void writeEntry(const QString& id, const QByteArray& text)
    {
        QDir().mkpath(session.dataHome() + "/applications");
        QFile file(session.dataHome() + "/applications/" + id + ".desktop");
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    }
    void setProperty(xcb_window_t w, const char* name, const char* type, const QByteArray& value)
    {
        xcb_change_property(x->connection(), XCB_PROP_MODE_REPLACE, w, x->atom(name), x->atom(type), 8, value.size(), value.constData());
    }
    // A top-level window as a program would show it, once the window manager manages it.
    xcb_window_t window(const QByteArray& wmClass, const char* nameType, const QByteArray& name)
    {
        xcb_connection_t* c = x->connection();
        const xcb_window_t w = xcb_generate_id(c);
        xcb_create_window(c, XCB_COPY_FROM_PARENT, w, x->root(), 100, 100, 400, 300, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                          x->screen()->root_visual, 0, nullptr);
        setProperty(w, "WM_CLASS", "STRING", wmClass);
        setProperty(w, "WM_NAME", nameType, name);
        xcb_map_window(c, w);
        x->flush();
        EXPECT_TRUE(VirtualSession::waitFor([&] { return x->clientWindows().contains(w); })) << "not managed";
        return w;
    }
    QString titleOf(xcb_window_t w)
    {
        QCoreApplication::processEvents();  // each turn of the event loop lists afresh
        for (const ScreenWindow& entry : catalog->onScreenWindows())
            if (entry.number == w) return entry.name;
        return "(not listed)";
    }

    VirtualSession session;
    QByteArray savedDataHome;
    std::unique_ptr<x11::XConnection> x;
    std::unique_ptr<x11::X11Workspace> workspace;
    std::unique_ptr<x11::X11WindowCatalog> catalog;
};

}  // namespace

// One process shows the writer and the spreadsheet of an office suite; the server, not the
// window, says which process that is.
TEST_F(WindowCatalogSession, ApplicationsOfOneProcessAreToldApartByTheirDesktopEntries)
{
    const xcb_window_t letter = window(QByteArray("office-writer\0office-writer", 27), "STRING", "Letter");
    const xcb_window_t budget = window(QByteArray("office-calc\0office-calc", 23), "STRING", "Budget");
    // What a sandboxed client says of itself counts only inside its sandbox.
    const quint32 sandboxPid = 2;
    xcb_change_property(x->connection(), XCB_PROP_MODE_REPLACE, budget, x->atom("_NET_WM_PID"), XCB_ATOM_CARDINAL, 32, 1, &sandboxPid);
    x->flush();
    QCoreApplication::processEvents();
    QStringList apps;
    for (const RunningApp& app : catalog->runningApplications())
        if (app.pid == getpid()) apps << app.bundleId + "=" + app.name;
    apps.sort();
    EXPECT_EQ(apps, (QStringList{"office-calc=Spreadsheet", "office-writer=Writer"}));
    const auto writerWindows = catalog->applicationWindows(RunningApp{getpid(), "office-writer", "Writer", true});
    ASSERT_TRUE(writerWindows);
    ASSERT_EQ(writerWindows->size(), 1);
    EXPECT_EQ(writerWindows->first().element, WindowId(letter));
}

TEST_F(WindowCatalogSession, TitlesAreDecodedByTheTypeTheyWereWrittenWith)
{
    const QByteArray cls("plain\0Plain", 11);
    const xcb_window_t latin1 = window(cls, "STRING", "Caf\xe9 cr\xe8me");
    const xcb_window_t utf8 = window(cls, "UTF8_STRING", "\xce\xa9mega \xf0\x9f\x98\x80");
    // Cyrillic in compound text: ISO 8859-5's upper half designated by ESC - L.
    const xcb_window_t compound = window(cls, "COMPOUND_TEXT", "Hi \x1b-L\xbf\xe0\xd8\xd2\xd5\xe2");
    const xcb_window_t both = window(cls, "STRING", "Old name");
    setProperty(both, "_NET_WM_NAME", "UTF8_STRING", "New name \xe2\x9c\x93");
    x->flush();
    EXPECT_EQ(titleOf(latin1), QString::fromUtf8("Café crème"));
    EXPECT_EQ(titleOf(utf8), QString::fromUtf8("Ωmega 😀"));
    EXPECT_EQ(titleOf(compound), QString::fromUtf8("Hi Привет"));
    EXPECT_EQ(titleOf(both), QString::fromUtf8("New name ✓"));
}

// A window manager that keeps no stacking list still lists its clients.
TEST_F(WindowCatalogSession, WindowsAreListedFromTheClientListAlone)
{
    const xcb_window_t one = window(QByteArray("plain\0Plain", 11), "STRING", "One");
    const xcb_window_t two = window(QByteArray("plain\0Plain", 11), "STRING", "Two");
    xcb_delete_property(x->connection(), x->root(), x->atom("_NET_CLIENT_LIST_STACKING"));
    x->flush();
    ASSERT_TRUE(VirtualSession::waitFor([&] { return x->property(x->root(), x->atom("_NET_CLIENT_LIST_STACKING")).isEmpty(); }));
    EXPECT_EQ(titleOf(one), "One");
    EXPECT_EQ(titleOf(two), "Two");
}
