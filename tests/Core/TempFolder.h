#pragma once
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <string_view>

/** A folder that is gone at the end of the test. */
class TempFolder {
public:
    TempFolder() {
        std::string pattern = (std::filesystem::temp_directory_path() / "vopla-XXXXXX").string();
        i_path = ::mkdtemp(pattern.data());
    }
    ~TempFolder() {
        std::error_code ignored;   // a test that failed may have left what cannot go
        std::filesystem::remove_all(i_path, ignored);
    }
    TempFolder(const TempFolder&) = delete;
    TempFolder& operator=(const TempFolder&) = delete;
    [[nodiscard]] std::filesystem::path operator/(std::string_view name) const { return i_path / name; }
    [[nodiscard]] const std::filesystem::path& Path() const { return i_path; }

private:
    std::filesystem::path i_path;
};

inline std::string ReadWhole(const std::filesystem::path& file) {
    std::stringstream all;
    all << std::ifstream(file, std::ios::binary).rdbuf();
    return all.str();
}
inline void WriteWhole(const std::filesystem::path& file, std::string_view bytes) {
    std::filesystem::create_directories(file.parent_path());
    std::ofstream(file, std::ios::binary).write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
}
