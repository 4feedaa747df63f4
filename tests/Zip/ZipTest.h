#pragma once
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Core/TempFolder.h"
#include "Files/MemorySource.h"
#include "Zip/CByteSource_Zip.h"
#include "Zip/CZipArchive.h"

/** The archives of zip_maker.py. They are made once for the build folder, and again when the script has changed: each
    test may be a process of its own. */
class ZipTest : public testing::Test {
protected:
    static void SetUpTestSuite() {
        namespace fs = std::filesystem;
        const fs::path script = VOPLA_SOURCE_DIR "/tests/Zip/zip_maker.py";
        const std::string state = std::to_string(std::hash<std::string>{}(ReadWhole(script)));
        s_folder = fs::path(VOPLA_BINARY_DIR) / "zips" / state;
        if (fs::exists(s_folder)) return;
        fs::create_directories(s_folder.parent_path());
        std::string pattern = s_folder.string() + "-XXXXXX";
        const fs::path made = ::mkdtemp(pattern.data());
        ASSERT_EQ(std::system(("python3 '" + script.string() + "' '" + made.string() + "'").c_str()), 0);
        std::error_code taken;   // by another test, which made the same
        fs::rename(made, s_folder, taken);
        if (taken) fs::remove_all(made);
    }
    static std::filesystem::path Made(std::string_view name) { return s_folder / name; }
    static std::string Bytes(std::string_view name) { return ReadWhole(Made(name)); }

    static OSErr Read(CByteSource& source, std::string& bytes, std::size_t step = 10'000) {
        bytes.clear();
        for (;;) {
            const std::size_t hadL = bytes.size();
            bytes.resize(hadL + step);
            std::size_t got = 0;
            const OSErr err = source.Read(std::as_writable_bytes(std::span(bytes)).subspan(hadL), got);
            bytes.resize(hadL + got);
            if (Failed(err)) return err == eofErr ? noErr : err;
        }
    }
    static const CZipMember* Find(const CZipArchive& archive, std::string_view name) {
        const auto at = std::ranges::find(archive.Members(), name, &CZipMember::name);
        return at == archive.Members().end() ? nullptr : &*at;
    }
    /** Reads the member of an archive in memory; the fault is what the reading ended with. */
    static ZipFault ReadMember(const std::string& zip, const CZipMember& member, std::string& bytes) {
        CByteSource_Zip source;
        bytes.clear();
        if (!Failed(source.Open(std::make_unique<MemorySource>(zip), member))) static_cast<void>(Read(source, bytes));
        return source.Fault();
    }

    static inline std::filesystem::path s_folder;
};
