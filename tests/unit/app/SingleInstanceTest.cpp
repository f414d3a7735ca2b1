#include "app/SingleInstance.h"
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTemporaryDir>
#include <atomic>
#include <thread>
#include <gtest/gtest.h>

using namespace orlo;

TEST(SingleInstance, SecondInstanceHandsItsMessageToTheFirstAndGetsItsAnswer)
{
    QTemporaryDir dir;
    SingleInstance first(dir.filePath("config"), dir.filePath("run"));
    SingleInstance second(dir.filePath("config"), dir.filePath("run"));
    EXPECT_FALSE(second.isPrimaryElsewhere()) << "nobody runs yet";
    QList<QByteArray> received;
    ASSERT_TRUE(first.becomePrimary([&](const QByteArray& message) {
        received << message;
        return message == "snap\tleft-half" ? QByteArray("ok") : QByteArray("error: no such thing\nhere");
    }));
    EXPECT_TRUE(second.isPrimaryElsewhere());
    EXPECT_FALSE(second.becomePrimary([](const QByteArray&) { return QByteArray(); }));
    // The second process waits for an answer that the first gives from its event loop.
    auto ask = [&](const QByteArray& message) {
        std::optional<QByteArray> answer;
        std::atomic<bool> done = false;
        std::thread sender([&] {
            answer = second.sendToPrimary(message, 3000);
            done = true;
        });
        QDeadlineTimer deadline(4000);
        while (!done && !deadline.hasExpired()) QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        sender.join();
        return answer;
    };
    EXPECT_EQ(ask("snap\tleft-half"), QByteArray("ok"));
    EXPECT_EQ(ask("bogus"), QByteArray("error: no such thing here")) << "an answer is one line";
    EXPECT_EQ(received, (QList<QByteArray>{"snap\tleft-half", "bogus"}));
}
