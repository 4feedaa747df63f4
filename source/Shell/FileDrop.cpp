#include "Shell/FileDrop.h"

#include <QDropEvent>
#include <QMimeData>
#include <QUrl>

QStringList LocalFiles(const QMimeData& data) {
    QStringList paths;
    for (const QUrl& url : data.urls())
        if (url.isLocalFile()) paths << url.toLocalFile();
    return paths;
}

bool AcceptCopy(QDropEvent& event) {
    const bool ableB = event.possibleActions().testFlag(Qt::CopyAction);
    event.setDropAction(ableB ? Qt::CopyAction : Qt::IgnoreAction);
    event.setAccepted(ableB);
    return ableB;
}
