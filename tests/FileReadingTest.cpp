/* Reading input files: what is refused, without blocking or reading forever */
#include <gtest/gtest.h>

#include "QuelmarEngine/host/FileReading.h"
#include "TestSupport.h"

using namespace QuelmarEngine;
using namespace QuelmarTest;

TEST(FileReadingTest, ReadsRegularFilesUpToTheLimit) {
    const TemporaryFolder folder;
    writeText(folder/"four", "four");
    /* Opened for reading with no writer, a FIFO would block */
    ASSERT_EQ(::mkfifo((folder/"fifo").data(), 0600), 0);

    const struct { const char* name; std::string path; std::size_t limit; const char* text; const char* error; } rows[]{
        {"within the limit", folder/"four", 4, "four", ""},
        {"past the limit", folder/"four", 3, "", "it is larger than 3 bytes"},
        {"directory", folder.path, DefaultMaxFileSize, "", "it is a directory"},
        {"FIFO", folder/"fifo", DefaultMaxFileSize, "", "it is a FIFO, not a regular file"},
        {"device that never ends", "/dev/zero", DefaultMaxFileSize, "", "it is a device, not a regular file"},
        {"missing", folder/"missing", DefaultMaxFileSize, "", "No such file or directory"},
    };
    for(const auto& row: rows) {
        SCOPED_TRACE(row.name);
        std::string text = "old", error;
        EXPECT_EQ(readFile({row.path.data(), row.path.size()}, text, error, row.limit), !*row.error);
        EXPECT_EQ(text, row.text);
        EXPECT_EQ(error, row.error);
    }
}
