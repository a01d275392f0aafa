/* Replacing files atomically: permissions and links kept, nothing left behind */
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>
#include <gtest/gtest.h>

#include "QuelmarEngine/host/AtomicFile.h"

using namespace QuelmarEngine;

namespace {

std::string readText(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream{path}.rdbuf();
    return text.str();
}

std::size_t entryCount(const std::string& dir) {
    std::size_t count = 0;
    DIR* const handle = ::opendir(dir.data());
    while(const dirent* const entry = ::readdir(handle)) count += entry->d_name[0] != '.';
    ::closedir(handle);
    return count;
}

}

TEST(AtomicFileTest, ReplacesTheFileALinkPointsToKeepingItsPermissions) {
    const std::string dir = testing::TempDir() + "atomic-file-" + std::to_string(::getpid());
    ASSERT_EQ(::mkdir(dir.data(), 0700), 0);
    const std::string file = dir + "/file", link = dir + "/link";
    std::ofstream{file} << "old";
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
    const std::string blocked = dir + "/file/below";
    EXPECT_FALSE(writeFileAtomically({blocked.data(), blocked.size()}, "x", error));
    EXPECT_EQ(error, "Not a directory");
    EXPECT_EQ(entryCount(dir), 2u);

    std::remove(link.data());
    std::remove(file.data());
    ::rmdir(dir.data());
}
