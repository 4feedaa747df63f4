#include "Shell/CGraphicsCard.h"

#include <QCoreApplication>
#include <QDir>
#include <QGuiApplication>
#include <QOffscreenSurface>
#include <QOpenGLContext>
#include <QOpenGLFunctions>

#include <iostream>

#include "Core/CLog.h"

namespace {

bool IsCardThere() { return !QDir("/dev/dri").entryList({"renderD*"}, QDir::System).isEmpty(); }

bool CanTheDisplay() {
    const QString platform = QGuiApplication::platformName();
    return platform == "xcb" || platform.startsWith("wayland");
}

}   // namespace

bool CGraphicsCard::IsSoftware(const QString& renderer) {
    for (const char* const nameZ : {"llvmpipe", "softpipe", "swrast", "software rasterizer", "swiftshader", "swr "})
        if (renderer.contains(QLatin1String(nameZ), Qt::CaseInsensitive)) return true;
    return false;
}

void CGraphicsCard::Ask(Choice choice) {
    if (std::exchange(i_askedB, true)) return;
    i_choice = choice;
    if (choice == kChoice_PROCESSOR) return Settle(false, "chosen");
    if (!CanTheDisplay()) return Settle(false, "the display system has no OpenGL");
    if (choice == kChoice_AUTOMATIC && !IsCardThere()) return Settle(false, "there is no graphics card");
    i_question.setProcessChannelMode(QProcess::SeparateChannels);
    i_question.setStandardErrorFile(QProcess::nullDevice());
    i_question.start(QCoreApplication::applicationFilePath(), {kOptionZ}, QIODevice::ReadOnly);
}

bool CGraphicsCard::Draws() {
    if (i_settledB || !i_askedB) return i_drawsB;
    const bool endedB = i_question.state() == QProcess::NotRunning || i_question.waitForFinished(kAnswer_Milliseconds);
    const QString renderer = QString::fromUtf8(i_question.readAllStandardOutput()).trimmed();
    if (!endedB) {
        i_question.kill();   // reaped with this object, or by its next event
        Settle(false, "the driver does not answer");
    } else if (i_question.exitStatus() != QProcess::NormalExit) {
        Settle(false, "the driver crashed when it was asked");
    } else if (i_question.exitCode() != 0 || renderer.isEmpty()) {
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
    QOffscreenSurface surface;
    surface.create();
    QOpenGLContext context;
    if (!context.create() || !context.makeCurrent(&surface)) return 1;
    const auto* const nameP = context.functions()->glGetString(GL_RENDERER);
    if (nameP == nullptr) return 1;
    std::cout << reinterpret_cast<const char*>(nameP) << std::endl;
    return 0;
}
