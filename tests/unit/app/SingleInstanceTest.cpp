#include "app/SingleInstance.h"
#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <atomic>
#include <thread>
#include <gtest/gtest.h>

using namespace orlo;

TEST(SingleInstance, SecondInstanceHandsItsMessageToTheFirst)
{
    QTemporaryDir dir;
    SingleInstance first(dir.filePath("config"), dir.filePath("run"));
    ASSERT_TRUE(first.becomePrimary());
    QSignalSpy received(&first, &SingleInstance::messageReceived);
    SingleInstance second(dir.filePath("config"), dir.filePath("run"));
    EXPECT_FALSE(second.becomePrimary());
    // The second process waits for an answer that the first gives from its event loop.
    std::atomic<bool> answered = false;
    std::thread sender([&] { answered = second.sendToPrimary("settings", 3000); });
    QDeadlineTimer deadline(4000);
    while (!answered && !deadline.hasExpired()) QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    sender.join();
    EXPECT_TRUE(answered);
    ASSERT_EQ(received.count(), 1);
    EXPECT_EQ(received.first().first().toByteArray(), QByteArray("settings"));
}
