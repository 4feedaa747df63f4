#include "Platform/CMountTable.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <fstream>

namespace {

using Paths = std::vector<std::filesystem::path>;

TEST(CMountTable, VolumesThatComeGoAndChangePlaces) {
    std::string pattern = (std::filesystem::temp_directory_path() / "mounts-XXXXXX").string();
    const std::filesystem::path folder = ::mkdtemp(pattern.data());
    const auto write = [&](const std::string& text) { std::ofstream(folder / "mounts") << text; };
    const std::string root = "22 1 8:1 / / rw,relatime shared:1 - ext4 /dev/sda1 rw\n";
    const std::string stick = "40 22 8:17 / /media/kj/My\\040Songs\\134 rw shared:9 - vfat /dev/sdb1 rw\n";
    const std::string other = "41 22 8:33 / /media/kj/My\\040Songs\\134 rw - vfat /dev/sdc1 rw\n";
    const Paths place = {"/media/kj/My Songs\\"};
    CMountTable table(folder / "mounts");
    EXPECT_EQ(table.Changed(), Paths());   // there is no list
    write(root);
    EXPECT_EQ(table.Changed(), Paths());   // nothing to compare with
    EXPECT_EQ(table.Changed(), Paths());
    write(root + stick);
    EXPECT_EQ(table.Changed(), place);
    write(root + other);   // another stick in the same place: told once
    EXPECT_EQ(table.Changed(), place);
    write(other + root + "cut 22");
    EXPECT_EQ(table.Changed(), Paths());
    std::filesystem::remove(folder / "mounts");   // not to be read: nothing is known
    EXPECT_EQ(table.Changed(), Paths());
    write(root);
    EXPECT_EQ(table.Changed(), place);
    std::filesystem::remove_all(folder);

    CMountTable machine;
    EXPECT_EQ(machine.Changed(), Paths());
}

}   // namespace
