// What is said of files on standard error: in order, each message by itself, many equal ones in few lines.

#include "app/Answers.h"
#include "legacy/PcxFile.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <format>
#include <string>
#include <vector>

using namespace Kavra::Tests;
using Bytes = std::vector<unsigned char>;

namespace {

const std::string kOutOfData = "PCXReader::Invalid Frame -- out of data";

/// A PCX file of one column of 24 bits that ends with its header: of each row all three lines are missed, with a
/// message for each.
Bytes EmptyPcx(int rows) {
    Bytes file = Kavra::Legacy::PcxFile({1, rows, 8, 3, true, {}, Bytes(static_cast<std::size_t>(rows) * 3)});
    file.resize(128);
    return file;
}

std::string Line(const std::string& file, int more = 0) {
    return WarningLine(file, kOutOfData + (more > 0 ? std::format(" ({} more)", more) : std::string()));
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
        ExpectDone({"convert", file, folder / "out.png"}, Folded(file, 3 * rows));
    }
}

TEST(Messages, VerboseSaysEveryOneWhereverItStands) {
    const TemporaryFolder folder;
    const std::string file = folder.Write("empty.pcx", EmptyPcx(4)).string();
    const std::string out = folder / "out.png";
    ExpectDone({"--verbose", "convert", file, out}, Lines(file, 12));
    ExpectDone({"convert", "--verbose", file, out}, Lines(file, 12));
    ExpectDone({"convert", file, out, "--verbose"}, Lines(file, 12));
}

TEST(Messages, AnotherMessageComesAfterTheCount) {
    const TemporaryFolder folder;
    const std::string file = folder.Write("empty.pcx", EmptyPcx(2)).string();
    ExpectFailed({"convert", file, folder / "x.unknown"},
                 Folded(file, 6) + ErrorLine(folder / "x.unknown", "cannot be written"));
}

TEST(Messages, FilesWorkedOnAtTheSameTimeDoNotMixTheirCounts) {
    const TemporaryFolder folder;
    Words line = {"convert", "--jobs", "4"};
    std::string expected;
    for (int rows = 1; rows <= 12; ++rows) {
        const std::string file = folder.Write(std::format("{}.pcx", rows), EmptyPcx(rows)).string();
        line.push_back(file);
        expected += Folded(file, 3 * rows);
    }
    ExpectDone(Joined({line, {folder / "out", "--to", "png"}}), expected);
}

TEST(Messages, TheJsonOfADumpFoldsItsWarningsAlike) {
    const TemporaryFolder folder;
    const std::string file = folder.Write("empty.pcx", EmptyPcx(4)).string();
    const Words line = {"dump", file, "--out", folder / "block", "--json"};
    EXPECT_EQ(Json::parse(ExpectDone(line, Folded(file, 12)))["warnings"],
              Json({kOutOfData, kOutOfData, kOutOfData, kOutOfData + " (9 more)"}));
    EXPECT_EQ(Json::parse(ExpectDone(Joined({line, {"--verbose"}}), Lines(file, 12)))["warnings"],
              Json(Words(12, kOutOfData)));
}
