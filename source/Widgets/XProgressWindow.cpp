#include "Widgets/XProgressWindow.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDialog>
#include <QGuiApplication>
#include <QLabel>
#include <QLinearGradient>
#include <QPainter>
#include <QProgressBar>
#include <QScreen>
#include <QVBoxLayout>

#include "Widgets/QtText.h"

namespace {

constexpr QSize kSplash_Size{460, 220};

}   // namespace

XProgressWindow::XProgressWindow(std::string_view title)
    : QWidget(nullptr, Qt::SplashScreen | Qt::WindowStaysOnTopHint), i_textP(new QLabel), i_barP(new QProgressBar) {
    setAttribute(Qt::WA_ShowWithoutActivating);
    setWindowTitle(QtText(title));
    setFixedSize(kSplash_Size);

    auto* const titleP = new QLabel(QtText(title));
    titleP->setTextFormat(Qt::PlainText);
    QFont large = titleP->font();
    large.setPointSizeF(large.pointSizeF() * 1.8);
    large.setBold(true);
    titleP->setFont(large);
    titleP->setStyleSheet("color: white");
    i_textP->setTextFormat(Qt::PlainText);
    i_textP->setStyleSheet("color: #c8d4ff");
    i_barP->setTextVisible(false);
    i_barP->setRange(0, 0);
    i_barP->setFixedHeight(8);

    auto* const layoutP = new QVBoxLayout(this);
    layoutP->setContentsMargins(28, 24, 28, 24);
    layoutP->addWidget(titleP);
    layoutP->addStretch();
    layoutP->addWidget(i_textP);
    layoutP->addWidget(i_barP);

    if (const QScreen* screenP = QGuiApplication::primaryScreen(); screenP != nullptr)
        move(screenP->availableGeometry().center() - rect().center());
    QCoreApplication::instance()->installEventFilter(this);
    show();
    Redraw();
}

bool XProgressWindow::eventFilter(QObject* watchedP, QEvent* eventP) {
    if (eventP->type() == QEvent::Show || eventP->type() == QEvent::Hide)
        if (auto* const dialogP = qobject_cast<QDialog*>(watchedP); dialogP != nullptr && dialogP->isWindow())
            setVisible(eventP->type() == QEvent::Hide);
    return false;
}

void XProgressWindow::SetText(std::string_view text) {
    i_textP->setText(QtText(text));
    Redraw();
}

void XProgressWindow::SetSteps(std::size_t done, std::size_t total) {
    i_barP->setRange(0, static_cast<int>(std::min<std::size_t>(total, 1'000'000)));
    i_barP->setValue(static_cast<int>(std::min(done, total)));
    Redraw();
}

void XProgressWindow::Redraw() { repaint(); }

void XProgressWindow::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    QLinearGradient night(0, 0, 0, height());
    night.setColorAt(0, QColor(24, 28, 74));
    night.setColorAt(1, QColor(70, 26, 92));
    painter.fillRect(rect(), night);
}

void XProgressWindow::closeEvent(QCloseEvent* eventP) { eventP->ignore(); }
