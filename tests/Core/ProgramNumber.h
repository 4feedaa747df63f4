#pragma once
#include <gtest/gtest.h>

#include <algorithm>
#include <charconv>
#include <string_view>

/** The number at the front of what another program wrote, which has a point in any locale. */
inline double ProgramNumber(std::string_view text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\n"), text.size()));
    double value = 0;
    EXPECT_EQ(std::from_chars(text.data(), text.data() + text.size(), value).ec, std::errc{}) << text;
    return value;
}
