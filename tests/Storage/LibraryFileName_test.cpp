#include "Storage/LibraryFileName.h"

TEST(LibraryFileName, IsOneThatDiscsTakeAndLoadsDoNotPassOver) {
    const struct {
        const char* titleZ;
        const char* nameZ;
    } kCases[] = {{"Plain Ёлка", "Plain Ёлка"},
                  {"a/b*c\\d\n", "a_b_c_d_"},
                  {"~mine", "_~mine"},
                  {".", "_._"},
                  {"ends.", "ends._"},
                  {"ends ", "ends _"},
                  {"", "Untitled"},
                  {"x (damaged 2024-02-29 12.00.01)", "x_(damaged 2024-02-29 12.00.01)"},
                  {"x (damaged)", "x (damaged)"}};
    for (const auto& c : kCases) {
        EXPECT_EQ(LibraryFileName(c.titleZ), c.nameZ);
        EXPECT_FALSE(IsPassedOver(LibraryFileName(c.titleZ))) << c.titleZ;
    }
    std::string longTitle;
    for (int n = 0; n < 100; ++n) longTitle += "日本";
    const std::string name = LibraryFileName(longTitle);
    EXPECT_EQ(name.size(), 237U);   // 79 whole characters
    EXPECT_TRUE(longTitle.starts_with(name));
    EXPECT_TRUE(IsPassedOver("Library (damaged 2024-02-29 12.00.01).xml"));
}
