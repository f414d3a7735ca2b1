// The Wayland clipboard's reading and serving, over a device that plays the compositor.
#include "platform/wayland/WaylandPasteboard.h"
#include <QSignalSpy>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

using orlo::Pasteboard;
using orlo::wayland::ClipboardDevice;
using orlo::wayland::WaylandPasteboard;

namespace {

// Another program's copy: each type's bytes are written at once; a type without bytes is
// never finished, as by a program that hangs.
struct FakeOffer : ClipboardDevice::Offer {
    QHash<QString, QByteArray> data;
    QStringList offered;
    std::vector<int> heldOpen;
    ~FakeOffer() override
    {
        for (int fd : heldOpen) close(fd);
    }
    QStringList types() const override { return offered; }
    void receive(const QString& type, int fd) override
    {
        if (!data.contains(type)) {
            heldOpen.push_back(dup(fd));
        } else if (write(fd, data[type].constData(), size_t(data[type].size())) != data[type].size()) {
            ADD_FAILURE() << "short write";
        }
        close(fd);
    }
};

struct FakeDevice : ClipboardDevice {
    QStringList selection;
    void setSelection(const QStringList& types) override { selection = types; }
    void offer(std::shared_ptr<FakeOffer> offer, bool ownEcho = false) { emit selectionChanged(offer, ownEcho); }
    QByteArray paste(const QString& type)
    {
        int fds[2];
        EXPECT_EQ(pipe(fds), 0);
        emit sendRequested(type, fds[1]);
        QByteArray out;
        char chunk[4096];
        // The pasteboard writes as the event loop runs, without blocking.
        fcntl(fds[0], F_SETFL, O_NONBLOCK);
        for (int i = 0; i < 200; ++i) {
            QCoreApplication::processEvents();
            const ssize_t n = read(fds[0], chunk, sizeof chunk);
            if (n == 0) break;
            if (n > 0) out.append(chunk, n);
        }
        close(fds[0]);
        return out;
    }
};

struct WaylandClipboard : ::testing::Test {
    FakeDevice* device = new FakeDevice;
    WaylandPasteboard pasteboard{std::unique_ptr<ClipboardDevice>(device)};
    QSignalSpy changed{&pasteboard, &WaylandPasteboard::changed};
};

TEST(WaylandClipboardTypes, ReadsTheRecordedTypesOnceAndNothingOfAMarkedCopy)
{
    EXPECT_EQ(WaylandPasteboard::typesToRead({"TEXT", "text/plain;charset=utf-8", "text/html", "image/bmp", "image/png",
                                              "application/x-unknown"}),
              (QStringList{"text/plain;charset=utf-8", "text/html", "image/png"}));
    EXPECT_EQ(WaylandPasteboard::typesToRead({"image/jpeg", "image/bmp"}), QStringList{"image/jpeg"});
    EXPECT_TRUE(WaylandPasteboard::typesToRead({"text/plain", "org.nspasteboard.ConcealedType"}).isEmpty());
    EXPECT_EQ(WaylandPasteboard::typesToRead({"text/plain", "x-kde-passwordManagerHint"}),
              (QStringList{"text/plain", "x-kde-passwordManagerHint"}));
}

TEST_F(WaylandClipboard, ANewCopyCountsOnceReadAndIsReadByForm)
{
    auto offer = std::make_shared<FakeOffer>();
    offer->offered = {"text/plain;charset=utf-8", "UTF8_STRING", "text/html", "text/uri-list"};
    offer->data = {{"text/plain;charset=utf-8", "Grüße"}, {"text/html", "<b>Grüße</b>"},
                   {"text/uri-list", "file:///tmp/a%20b\r\n"}};
    device->offer(offer);
    EXPECT_EQ(pasteboard.changeCount(), 0);  // still being read
    ASSERT_TRUE(changed.wait(5000));
    EXPECT_EQ(pasteboard.changeCount(), 1);
    EXPECT_EQ(pasteboard.types(), offer->offered);
    EXPECT_EQ(pasteboard.string(), QString("Grüße"));
    EXPECT_EQ(pasteboard.data(Pasteboard::Form::Html), QByteArray("<b>Grüße</b>"));
    EXPECT_EQ(pasteboard.filePaths(), QStringList{"/tmp/a b"});

    device->offer(nullptr);  // the clipboard emptied
    EXPECT_EQ(pasteboard.changeCount(), 2);
    EXPECT_TRUE(pasteboard.types().isEmpty());
    EXPECT_FALSE(pasteboard.string());
}

TEST_F(WaylandClipboard, AProgramThatNeverFinishesWritingIsNotWaitedFor)
{
    auto offer = std::make_shared<FakeOffer>();
    offer->offered = {"text/plain", "image/png"};
    offer->data = {{"text/plain", "kept"}};  // the PNG never comes
    device->offer(offer);
    ASSERT_TRUE(changed.wait(10000));
    EXPECT_EQ(pasteboard.changeCount(), 1);
    EXPECT_EQ(pasteboard.string(), QString("kept"));
    EXPECT_TRUE(pasteboard.data(Pasteboard::Form::Png).isEmpty());
}

TEST_F(WaylandClipboard, OrlosOwnCopyCountsAtOnceIsServedAndItsEchoIsNotCounted)
{
    Pasteboard::Contents contents;
    contents.string = QStringLiteral("from the history");
    contents.html = "<i>from the history</i>";
    pasteboard.write(contents);
    EXPECT_EQ(pasteboard.changeCount(), 1);
    EXPECT_TRUE(device->selection.contains("text/plain;charset=utf-8"));
    EXPECT_TRUE(device->selection.contains("text/html"));
    EXPECT_EQ(device->paste("UTF8_STRING"), QByteArray("from the history"));
    EXPECT_EQ(device->paste("text/html"), QByteArray("<i>from the history</i>"));

    auto echo = std::make_shared<FakeOffer>();
    echo->offered = device->selection;
    device->offer(echo, true);
    EXPECT_EQ(pasteboard.changeCount(), 1);
    EXPECT_EQ(pasteboard.string(), QString("from the history"));
}

}  // namespace
