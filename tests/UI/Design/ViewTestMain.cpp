#include <gtest/gtest.h>

#include <QGuiApplication>

// Tests of what is drawn, on a screen in memory.
int main(int argc, char** argv)
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    const QGuiApplication application(argc, argv);
    testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}

/// Asked by LeakSanitizer. Qt Quick takes its cache of drawn symbols with it when a process ends,
/// unreachable; leaks are looked for in the tests of everything that the panel stands on.
extern "C" int __lsan_is_turned_off() // NOLINT(bugprone-reserved-identifier)
{
    return 1;
}
