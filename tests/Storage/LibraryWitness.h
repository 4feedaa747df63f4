#pragma once
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <string>

/** The words of the other program, library_witness.py, on files of a library. */
inline std::string Witness(const std::string& arguments) {
    const std::string command = "python3 " VOPLA_SOURCE_DIR "/tests/Storage/library_witness.py " + arguments;
    FILE* pipe = ::popen(command.c_str(), "r");
    std::string all;
    std::array<char, 65536> part{};
    while (const std::size_t got = std::fread(part.data(), 1, part.size(), pipe)) all.append(part.data(), got);
    EXPECT_EQ(::pclose(pipe), 0) << arguments;
    return all;
}
