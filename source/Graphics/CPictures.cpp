#include "Graphics/CPictures.h"

#include <fstream>
#include <iterator>

#include "Core/CLog.h"
#include "Graphics/Ico.h"
#include "Graphics/Png.h"

namespace {
constexpr const char* kFolder_NameZ = "pictures";
constexpr std::uintmax_t kMaxFile_Bytes = 256U << 20;   // as many as 64 megapixels take without any packing

std::unique_ptr<COffscreen> ReadPngFile(const std::filesystem::path& file, OSErr& err) {
    std::error_code failed;
    const std::uintmax_t sizeL = std::filesystem::file_size(file, failed);
    err = failed ? ioErr : memFullErr;
    if (failed || sizeL > kMaxFile_Bytes) return nullptr;
    std::ifstream stream(file, std::ios::binary);
    const std::vector<std::uint8_t> bytes{std::istreambuf_iterator<char>(stream), {}};
    return ReadPng(bytes, err);
}
}   // namespace

CPictures::CPictures(std::filesystem::path appFolder, std::function<void(std::string_view)> report)
    : i_appFolder(std::move(appFolder)), i_report(std::move(report)) {}

std::unique_ptr<COffscreen> CPictures::Read(std::string_view name) const {
    const std::filesystem::path folder = i_appFolder / kFolder_NameZ;
    std::error_code ignored;
    if (!std::filesystem::is_directory(folder, ignored)) {
        LogF("$$$ WTF could not Pictures folder: %s/%s\n", i_appFolder.c_str(), kFolder_NameZ);
        return nullptr;
    }
    const bool icoB = name.ends_with(".ico");
    const std::string fileName = icoB ? std::string(name) : std::string(name) + ".png";
    const std::filesystem::path file = folder / fileName;
    const bool plainB = name.find('/') == std::string_view::npos && name.find('\0') == std::string_view::npos;
    if (name.empty() || !plainB || !std::filesystem::is_regular_file(file, ignored)) {
        LogF("$$$ WTF could not find PNG file: %s/%s\n", folder.c_str(), fileName.c_str());
        return nullptr;
    }
    OSErr err = noErr;
    auto picture = icoB ? ReadIco(file, err) : ReadPngFile(file, err);
    if (picture == nullptr) {
        (void)LogStep(err, "load picture", file);   // null is what the caller gets; the status stands in the log
        LogF("$$$ WTF could not load PNG: %s\n", file.c_str());
    }
    return picture;
}

CPictures::Picture CPictures::Load(std::string_view name) {
    Picture picture;
    {
        const std::lock_guard guard(i_lock);
        if (const auto kept = i_kept.find(name); kept != i_kept.end()) return kept->second;
        picture = Read(name);
        if (picture != nullptr) {
            LogF("Cacheing picture in RAM: %s\n", std::string(name).c_str());
            i_kept.emplace(name, picture);
        }
    }
    if (picture == nullptr && i_report) i_report(kNoPicture_Text);
    return picture;
}

CPictures::Picture CPictures::Load(std::size_t index, const std::vector<std::string>& names) {
    if (index < names.size()) return Load(names[index]);
    LogF("Attempt to get pict index %d from vector of size %d\n",
         static_cast<int>(std::min<std::size_t>(index, 0x7FFFFFFF)), static_cast<int>(names.size()));
    if (i_report) i_report(kNoPicture_Text);
    return nullptr;
}

void CPictures::Forget() {
    const std::lock_guard guard(i_lock);
    i_kept.clear();
}
