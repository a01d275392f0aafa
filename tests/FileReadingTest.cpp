/* Reading input files: what is refused, without blocking or reading forever */
#include <gtest/gtest.h>

#include "QuelmarEngine/host/FileReading.h"
#include "TestFiles.h"

using namespace QuelmarEngine;
using namespace QuelmarTest;

TEST(FileReadingTest, ReadsRegularFilesUpToTheLimit) {
    const TemporaryFolder folder;
    const std::string& dir = folder.path;
    writeText(dir + "/four", "four");
    /* Opened for reading with no writer, a FIFO would block */
    ASSERT_EQ(::mkfifo((dir + "/fifo").data(), 0600), 0);

    const struct { const char* name; std::string path; std::size_t limit; const char* text; const char* error; } rows[]{
        {"within the limit", dir + "/four", 4, "four", ""},
        {"past the limit", dir + "/four", 3, "", "it is larger than 3 bytes"},
        {"directory", dir, DefaultMaxFileSize, "", "it is a directory"},
        {"FIFO", dir + "/fifo", DefaultMaxFileSize, "", "it is a FIFO, not a regular file"},
        {"device that never ends", "/dev/zero", DefaultMaxFileSize, "", "it is a device, not a regular file"},
        {"missing", dir + "/missing", DefaultMaxFileSize, "", "No such file or directory"},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        std::string text = "old", error;
        EXPECT_EQ(readFile({row.path.data(), row.path.size()}, text, error, row.limit), !*row.error);
        EXPECT_EQ(text, row.text);
        EXPECT_EQ(error, row.error);
    }
}
