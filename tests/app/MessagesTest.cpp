// What is said of files on standard error: in order, each message by itself, many equal ones in few lines.

#include "legacy/PcxFile.h"
#include "support/Program.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <format>
#include <string>
#include <vector>

using namespace Kavra::Tests;
using Json = nlohmann::json;
using Bytes = std::vector<unsigned char>;

namespace {

constexpr const char* kOutOfData = "PCXReader::Invalid Frame -- out of data";

/// A PCX file of one column of 24 bits that ends with its header: of each row all three lines are missed, with a
/// message for each.
Bytes EmptyPcx(int rows) {
    Bytes file = Kavra::Legacy::PcxFile({1, rows, 8, 3, true, {}, Bytes(static_cast<std::size_t>(rows) * 3)});
    file.resize(128);
    return file;
}

std::string Line(const std::string& file, int more = 0) {
    return std::format("kavra: {}: warning: {}{}\n", file, kOutOfData,
                       more > 0 ? std::format(" ({} more)", more) : std::string());
}

std::string Lines(const std::string& file, int count) {
    std::string lines;
    for (int i = 0; i < count; ++i)
        lines += Line(file);
    return lines;
}

std::string Folded(const std::string& file, int count) {
    return count <= 3 ? Lines(file, count) : Lines(file, 3) + Line(file, count - 3);
}

}  // namespace

TEST(Messages, EqualOnesInARowAreFoldedIntoTheFirstThreeAndACount) {
    const TemporaryFolder folder;
    for (const int rows : {1, 2, 5, 65536}) {
        const std::string file = folder.Write("empty.pcx", EmptyPcx(rows)).string();
        const ProgramResult result = RunKavra({"dump", file, "--out", folder / "block"});
        EXPECT_EQ(result.status, 0);
        EXPECT_EQ(result.error, Folded(file, 3 * rows));
    }
}

TEST(Messages, VerboseSaysEveryOneWhereverItStands) {
    const TemporaryFolder folder;
    const std::string file = folder.Write("empty.pcx", EmptyPcx(4)).string();
    const std::string block = folder / "block";
    EXPECT_EQ(RunKavra({"--verbose", "dump", file, "--out", block}).error, Lines(file, 12));
    EXPECT_EQ(RunKavra({"dump", "--verbose", file, "--out", block}).error, Lines(file, 12));
    EXPECT_EQ(RunKavra({"dump", file, "--out", block, "--verbose"}).error, Lines(file, 12));
}

TEST(Messages, AnotherMessageComesAfterTheCount) {
    const TemporaryFolder folder;
    const std::string file = folder.Write("empty.pcx", EmptyPcx(2)).string();
    const ProgramResult result = RunKavra({"convert", file, folder / "x.unknown"});
    EXPECT_EQ(result.status, 1);
    EXPECT_EQ(result.error,
              Folded(file, 6) + "kavra: " + (folder / "x.unknown").string() + ": error: cannot be written\n");
}

TEST(Messages, FilesWorkedOnAtTheSameTimeDoNotMixTheirCounts) {
    const TemporaryFolder folder;
    std::vector<std::string> arguments = {"convert", "--jobs", "4"};
    std::string expected;
    for (int rows = 1; rows <= 12; ++rows) {
        const std::string file = folder.Write(std::format("{}.pcx", rows), EmptyPcx(rows)).string();
        arguments.push_back(file);
        expected += Folded(file, 3 * rows);
    }
    arguments.insert(arguments.end(), {folder / "out", "--to", "png"});
    EXPECT_EQ(RunKavra(arguments).error, expected);
}

TEST(Messages, TheJsonOfADumpFoldsItsWarningsAlike) {
    const TemporaryFolder folder;
    const std::string file = folder.Write("empty.pcx", EmptyPcx(4)).string();
    const auto warnings = [&](const std::vector<std::string>& more) {
        std::vector<std::string> arguments = {"dump", file, "--out", folder / "block", "--json"};
        arguments.insert(arguments.end(), more.begin(), more.end());
        return Json::parse(RunKavra(arguments).out)["warnings"];
    };
    EXPECT_EQ(warnings({}), Json({kOutOfData, kOutOfData, kOutOfData, std::string(kOutOfData) + " (9 more)"}));
    EXPECT_EQ(warnings({"--verbose"}), Json(std::vector<std::string>(12, kOutOfData)));
}
