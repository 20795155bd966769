#include "common/FileHandle.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace Kavra::Common {
namespace {

class FileHandleTest : public testing::Test {
protected:
    FileHandle Open(const std::filesystem::path& path) { return FileHandle(std::fopen(path.c_str(), "rb")); }

    Tests::TemporaryFolder folder;
};

TEST_F(FileHandleTest, ClosesItsStream) {
    FileHandle file = Open(folder.Write("f", std::string_view("text")));
    ASSERT_NE(file, nullptr);
    const int descriptor = fileno(file.get());
    file.reset();
    EXPECT_EQ(fcntl(descriptor, F_GETFD), -1);
    EXPECT_EQ(errno, EBADF);
}

TEST_F(FileHandleTest, TheLengthIsInBytesFromWhereverTheStreamStands) {
    const FileHandle file = Open(folder.Write("f", std::string_view("twelve bytes")));
    EXPECT_EQ(std::fgetc(file.get()), 't');
    EXPECT_EQ(FileLength(file.get()), 12U);
    EXPECT_EQ(ftello(file.get()), 12);
    EXPECT_EQ(FileLength(Open(folder.Write("empty", std::string_view())).get()), 0U);
}

TEST_F(FileHandleTest, TheLengthMayBeMoreThanThirtyTwoBitsHold) {
    const auto path = folder.Write("large", std::string_view());
    constexpr std::uint64_t kLength = 5'000'000'001;
    std::filesystem::resize_file(path, kLength);
    EXPECT_EQ(FileLength(Open(path).get()), kLength);
}

TEST_F(FileHandleTest, AStreamThatCannotBeSoughtHasNoLength) {
    int ends[2];
    ASSERT_EQ(pipe(ends), 0);
    const FileHandle reader(fdopen(ends[0], "rb"));
    EXPECT_EQ(FileLength(reader.get()), std::nullopt);
    close(ends[1]);
}

}  // namespace
}  // namespace Kavra::Common
