#include "Widgets/QtText.h"

#include <QTextDocument>

QString PlainToolTip(const QString& text) {
    return Qt::mightBeRichText(text) ? "<span>" + text.toHtmlEscaped() + "</span>" : text;
}
