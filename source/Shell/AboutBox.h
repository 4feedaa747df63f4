#pragma once

class QWidget;

/** Shows the version of the program and those of the libraries that it runs with, beside the show: nobody waits for it.
    Main thread. */
void ShowAbout(QWidget& parent);
