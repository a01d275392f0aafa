/* Replacing files atomically: permissions and links kept, nothing left behind */
#include <filesystem>
#include <sys/stat.h>
#include <unistd.h>
#include <gtest/gtest.h>

#include "QuelmarEngine/host/AtomicFile.h"
#include "TestSupport.h"

using namespace QuelmarEngine;
using namespace QuelmarTest;

TEST(AtomicFileTest, ReplacesTheFileALinkPointsToKeepingItsPermissions) {
    const TemporaryFolder dir;
    const std::string file = dir/"file", link = dir/"link";
    writeText(file, "old");
    ASSERT_EQ(::chmod(file.data(), 0640), 0);
    ASSERT_EQ(::symlink("file", link.data()), 0);

    std::string error;
    ASSERT_TRUE(writeFileAtomically({link.data(), link.size()}, "new", error)) << error;
    struct stat info;
    ASSERT_EQ(::lstat(link.data(), &info), 0);
    EXPECT_TRUE(S_ISLNK(info.st_mode));
    ASSERT_EQ(::stat(file.data(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, 0640u);
    EXPECT_EQ(readText(file), "new");

    /* A write that fails says why and leaves no temporary file */
    const std::string blocked = dir/"file/below";
    EXPECT_FALSE(writeFileAtomically({blocked.data(), blocked.size()}, "x", error));
    EXPECT_EQ(error, "Not a directory");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator{dir.path}, {}), 2);
}
