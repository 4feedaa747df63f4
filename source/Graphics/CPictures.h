#pragma once
#include <filesystem>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <vector>

#include "Graphics/COffscreen.h"

/** The pictures that come with the program, by name, kept in memory once loaded.
    Threads  any; one lock inside. A picture handed out is never changed and lives as long as someone holds it.
    Owner    the application.
    Errors   null, a log line, and the report below; a missing or broken picture is asked for anew the next time. */
class CPictures {
public:
    using Picture = std::shared_ptr<const COffscreen>;
    /** What the user is told when there is no picture. */
    static constexpr std::string_view kNoPicture_Text = "Went south getting an offscreen, please send the log file";

    /** Looks in the folder "pictures" of `appFolder`. `report` is called without the lock, with kNoPicture_Text. */
    explicit CPictures(std::filesystem::path appFolder, std::function<void(std::string_view)> report = {});

    /** The picture `name`.png; the file itself for a name that ends in ".ico". A name with a folder in it is not found. */
    [[nodiscard]] Picture Load(std::string_view name);
    /** The picture `index` of a list of names. */
    [[nodiscard]] Picture Load(std::size_t index, const std::vector<std::string>& names);
    /** Drops what is kept in memory. */
    void Forget();

private:
    [[nodiscard]] std::unique_ptr<COffscreen> Read(std::string_view name) const;

    const std::filesystem::path i_appFolder;
    const std::function<void(std::string_view)> i_report;
    std::mutex i_lock;
    std::map<std::string, Picture, std::less<>> i_kept;   // guarded by i_lock
};
