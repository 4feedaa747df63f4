#include "App/LibraryVersions.h"

#include <cairo.h>
#include <ebur128.h>
#include <expat.h>
#include <lame/lame.h>
#include <SDL.h>
#include <SoundTouch.h>
#include <unicode/uversion.h>
#include <zlib.h>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>
}

namespace {

std::string Points(unsigned major, unsigned minor, unsigned micro) {
    return std::to_string(major) + "." + std::to_string(minor) + "." + std::to_string(micro);
}

std::string OfMedia(unsigned version) { return Points(version >> 16, version >> 8 & 255U, version & 255U); }

std::string OfSDL() {
    SDL_version version{};
    SDL_GetVersion(&version);
    return Points(version.major, version.minor, version.patch);
}

std::string OfICU() {
    UVersionInfo version{};
    u_getVersion(version);
    char text[U_MAX_VERSION_STRING_LENGTH]{};
    u_versionToString(version, text);
    return text;
}

std::string OfLoudness() {
    int major = 0, minor = 0, patch = 0;
    ebur128_get_version(&major, &minor, &patch);
    return Points(static_cast<unsigned>(major), static_cast<unsigned>(minor), static_cast<unsigned>(patch));
}

std::string OfExpat() {
    const XML_Expat_Version version = XML_ExpatVersionInfo();
    return Points(static_cast<unsigned>(version.major), static_cast<unsigned>(version.minor),
                  static_cast<unsigned>(version.micro));
}

}   // namespace

std::vector<LibraryVersion> LibraryVersions() {
    return {{"FFmpeg", av_version_info()},
            {"libavcodec", OfMedia(avcodec_version())},
            {"libavformat", OfMedia(avformat_version())},
            {"libswresample", OfMedia(swresample_version())},
            {"libswscale", OfMedia(swscale_version())},
            {"SDL", OfSDL()},
            {"SoundTouch", soundtouch::SoundTouch::getVersionString()},
            {"LAME", get_lame_version()},
            {"libebur128", OfLoudness()},
            {"Cairo", cairo_version_string()},
            {"ICU", OfICU()},
            {"Expat", OfExpat()},
            {"zlib", zlibVersion()}};
}
