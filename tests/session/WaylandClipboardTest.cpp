// Clipboard history in a headless Wayland compositor (sway or KWin, ORLO_TEST_COMPOSITOR):
// copies made by wl-copy, the real Orlo on its Wayland backend, and its picker.
#include "VirtualSession.h"
#include "WaylandSession.h"
#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <gtest/gtest.h>

using orlo::testing::OrloProcess;
using orlo::testing::WaylandSession;

namespace {

class WaylandClipboard : public ::testing::Test {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(session.start()) << qPrintable(session.error());
        orlo = std::make_unique<OrloProcess>(session);
        ASSERT_TRUE(orlo->waitForLine("started clipboard")) << qPrintable(orlo->log());
    }

    bool onSway() const { return session.compositor() == QLatin1String("sway"); }
    int seenCopies() { return int(orlo->log().count(QRegularExpression("copy (recorded|ignored)"))); }

    // wl-copy serves its copy until another takes its place; Orlo has seen it once it logs it.
    void copy(const QByteArray& data, const QString& type = {})
    {
        const int before = seenCopies();
        QStringList args;
        if (!type.isEmpty()) args << "--type" << type;
        QProcess* p = session.launch("wl-copy", args);
        p->write(data);
        p->closeWriteChannel();
        EXPECT_TRUE(WaylandSession::waitFor([&] { return seenCopies() > before; })) << qPrintable(orlo->log());
    }
    QString pasted() { return session.output("wl-paste", {"--no-newline"}); }

    QJsonArray history()
    {
        // Saved a second after the last change.
        const QString file = session.dataHome() + "/Orlo/Clipboard/history.json";
        QJsonArray items;
        WaylandSession::waitFor([&] {
            QFile f(file);
            items = f.open(QIODevice::ReadOnly) ? QJsonDocument::fromJson(f.readAll()).array() : QJsonArray();
            return !items.isEmpty();
        });
        return items;
    }

    WaylandSession session{qEnvironmentVariable("ORLO_TEST_COMPOSITOR", "sway")};
    std::unique_ptr<OrloProcess> orlo;
};

TEST_F(WaylandClipboard, ProbesTheCompositorAndChoosesTheWaylandBackend)
{
    EXPECT_TRUE(orlo->log().contains("Wayland compositor offers: wlr-data-control")) << qPrintable(orlo->log());
    EXPECT_EQ(orlo->log().contains("virtual-keyboard"), onSway()) << qPrintable(orlo->log());
    EXPECT_FALSE(orlo->log().contains("Wayland connection was lost")) << qPrintable(orlo->log());
}

TEST_F(WaylandClipboard, RecordsTextAndImagesButNotConcealedCopies)
{
    copy("copied on Wayland\n");
    EXPECT_TRUE(orlo->log().contains("copy recorded: text")) << qPrintable(orlo->log());

    QImage image(40, 30, QImage::Format_RGB32);
    image.fill(Qt::darkCyan);
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    copy(png, "image/png");
    EXPECT_TRUE(orlo->log().contains("copy recorded: image")) << qPrintable(orlo->log());

    copy("hunter2", "org.nspasteboard.ConcealedType");
    EXPECT_TRUE(orlo->log().contains("copy ignored: marked org.nspasteboard.ConcealedType")) << qPrintable(orlo->log());

    const QJsonArray items = history();
    ASSERT_EQ(items.size(), 2) << qPrintable(QJsonDocument(items).toJson());
    EXPECT_EQ(items[0].toObject()["kind"].toString(), "image");
    EXPECT_EQ(items[0].toObject()["imageWidth"].toInt(), 40);
    EXPECT_EQ(items[1].toObject()["text"].toString(), "copied on Wayland\n");
}

TEST_F(WaylandClipboard, PickerChoiceReachesTheClipboardAndIsPasted)
{
    // Typed on sway's virtual keyboard, through KWin's fake input on KWin.
    EXPECT_TRUE(orlo->log().contains(onSway() ? "virtual-keyboard" : "kwin-fake-input")) << qPrintable(orlo->log());
    copy("the older copy");
    copy("the newer copy");
    QProcess* window = session.launchQt(WaylandSession::builtProgram("orlo-test-window"), {"Paste Target"});
    ASSERT_TRUE(WaylandSession::waitFor([&] { return window->peek(1 << 16).contains("ready"); }))
        << qPrintable(window->readAllStandardError());
    ASSERT_TRUE(WaylandSession::waitFor([&] { return window->peek(1 << 16).contains("active Paste Target"); }))
        << qPrintable(window->peek(1 << 16));

    ASSERT_EQ(session.run(WaylandSession::builtProgram("orlo"), {"clipboard"}), 0);
    ASSERT_TRUE(orlo->waitForLine("picker shown at .* with 2 rows")) << qPrintable(orlo->log());
    // Keys reach the picker once the compositor has given it the focus.
    ASSERT_TRUE(orlo->waitForLine("picker has the keyboard")) << qPrintable(orlo->log());
    EXPECT_TRUE(session.screenshot(WaylandSession::screenshotPath(QString(onSway() ? "sway" : "kwin-wayland") + "-clipboard-picker.png")));

    // The second row holds the older copy.
    ASSERT_TRUE(session.press({"Down", "Return"}));
    ASSERT_TRUE(orlo->waitForLine("paste keystroke sent")) << qPrintable(orlo->log());
    EXPECT_TRUE(WaylandSession::waitFor([&] { return pasted() == "the older copy"; })) << qPrintable(orlo->log());
    EXPECT_TRUE(WaylandSession::waitFor([&] { return window->peek(1 << 16).contains("text the older copy"); }))
        << qPrintable(window->peek(1 << 16));
}

}  // namespace
