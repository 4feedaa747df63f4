#include "Widgets/CGraphicsCard.h"

#include <QCoreApplication>
#include <QDir>
#include <QEventLoop>
#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>
#include <QTimer>

#include <iostream>

#include "Core/CLog.h"

namespace {

bool IsCardThere() { return !QDir("/dev/dri").entryList({"renderD*"}, QDir::System).isEmpty(); }

}   // namespace

CGraphicsCard::CGraphicsCard() : CGraphicsCard(Witness()) {}
CGraphicsCard::CGraphicsCard(Witness witness) : i_witness(std::move(witness)) {}

CGraphicsCard::~CGraphicsCard() {
    // Its destructor would wait for it, and a process that hangs inside a driver cannot even be killed.
    if (i_questionP != nullptr && i_questionP->state() != QProcess::NotRunning)
        static_cast<void>(i_questionP.release());
}

bool CGraphicsCard::IsSoftware(const QString& renderer) {
    for (const char* const nameZ : {"llvmpipe", "softpipe", "swrast", "software rasterizer", "swiftshader", "swr "})
        if (renderer.contains(QLatin1String(nameZ), Qt::CaseInsensitive)) return true;
    return false;
}

void CGraphicsCard::Ask(Choice choice) {
    if (i_settledB || i_questionP != nullptr) return;
    i_choice = choice;
    if (choice == kChoice_PROCESSOR) return Settle(false, "chosen");
    if (choice == kChoice_AUTOMATIC && !IsCardThere()) return Settle(false, "there is no graphics card");
    i_questionP = std::make_unique<QProcess>();
    i_questionP->setStandardErrorFile(QProcess::nullDevice());
    i_questionP->start(i_witness.program.isEmpty() ? QCoreApplication::applicationFilePath() : i_witness.program,
                       i_witness.words, QIODevice::ReadOnly);
}

void CGraphicsCard::Wait() {
    if (i_questionP->state() == QProcess::NotRunning) return;
    QEventLoop loop;
    QObject::connect(i_questionP.get(), &QProcess::finished, &loop, &QEventLoop::quit);
    QTimer::singleShot(i_witness.mostL, &loop, &QEventLoop::quit);
    loop.exec(QEventLoop::ExcludeUserInputEvents);
}

bool CGraphicsCard::Draws() {
    if (i_settledB || i_questionP == nullptr) return i_drawsB;
    Wait();
    const QString renderer = QString::fromUtf8(i_questionP->readAllStandardOutput()).trimmed();
    if (i_questionP->state() != QProcess::NotRunning) {
        i_questionP->kill();
        Settle(false, "the driver does not answer");
    } else if (i_questionP->error() == QProcess::FailedToStart) {
        Settle(false, "nobody could be asked");
    } else if (i_questionP->exitStatus() != QProcess::NormalExit) {
        Settle(false, "the driver crashed when it was asked");
    } else if (i_questionP->exitCode() != 0 || renderer.isEmpty()) {
        Settle(false, "there is no OpenGL");
    } else if (i_choice == kChoice_AUTOMATIC && IsSoftware(renderer)) {
        Settle(false, renderer + " is no graphics card");
    } else {
        Settle(true, renderer);
    }
    return i_drawsB;
}

void CGraphicsCard::Settle(bool drawsB, const QString& why) {
    i_settledB = true;
    i_drawsB = drawsB;
    LogF("video windows are drawn by %s (%s)\n", drawsB ? "OpenGL" : "the processor", why.toStdString().c_str());
}

int CGraphicsCard::Tell(int& countL, char** wordsZ) {
    const QGuiApplication qt(countL, wordsZ);
    // Others may have a context, but no window that is drawn by it.
    const QString platform = QGuiApplication::platformName();
    if (platform != "xcb" && !platform.startsWith("wayland")) return 1;
    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext context;
    if (!context.create() || !context.makeCurrent(&surface)) return 1;
    const auto* const nameP = context.functions()->glGetString(GL_RENDERER);
    if (nameP == nullptr) return 1;
    std::cout << reinterpret_cast<const char*>(nameP) << std::endl;
    return 0;
}
