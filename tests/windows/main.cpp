// The windows' tests bring their own main(): without a screen they run on the offscreen platform.
#include <gtest/gtest.h>

#include <QApplication>

#include "platform/qt/list_names.h"

int main(int argc, char** argv) {
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    ampdesk::name_lists_by_their_labels();
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
