#pragma once
#include <QtWidgets/QApplication>

/** One application object for the whole program, without a display. */
inline QApplication& App() {
    static int s_countL = 1;
    static char s_name[] = "test_Shell";
    static char* s_arguments[] = {s_name, nullptr};
    static QApplication* const s_appP = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        return new QApplication(s_countL, s_arguments);
    }();
    return *s_appP;
}
