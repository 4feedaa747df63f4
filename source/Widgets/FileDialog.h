#pragma once
#include <functional>
#include <QStringList>

class QFileDialog;
class QWidget;

/** A dialog for files that stands beside the show and deletes itself when it is closed. It is the toolkit's own: in that of
    the desktop no key would reach the show. */
[[nodiscard]] QFileDialog* MakeFileDialog(QWidget* parentP, const QString& title, const QString& folder);
/** Shows it; `chosen` is called with what was chosen, and not at all on cancel. */
void ShowFileDialog(QFileDialog& dialog, std::function<void(const QStringList& files)> chosen);
