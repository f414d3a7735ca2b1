#include <QApplication>
#include <gtest/gtest.h>

int main(int argc, char** argv)
{
    // The session tests build their own X sessions; Qt itself draws nothing here.
    qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
