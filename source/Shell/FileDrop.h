#pragma once
#include <QStringList>

class QDropEvent;
class QMimeData;

/** The files on this machine that are dragged. */
[[nodiscard]] QStringList LocalFiles(const QMimeData& data);
/** Makes a drop a copy, whatever its source proposes: a file manager that is told of a move deletes what was dragged.
    False, and refused, when the source would only give its things away. */
bool AcceptCopy(QDropEvent& event);
