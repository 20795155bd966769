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
        ExpectDone({"convert", file, folder / "out.png", "--accept-partial"},
                   Folded(file, 3 * rows) + PartialLine(file, 0, rows));
    }
}

TEST(Messages, VerboseSaysEveryOneWhereverItStands) {
    const TemporaryFolder folder;
    const std::string file = folder.Write("empty.pcx", EmptyPcx(4)).string();
    const std::string out = folder / "out.png";
    const std::string said = Lines(file, 12) + PartialLine(file, 0, 4);
    ExpectDone({"--verbose", "convert", file, out, "--accept-partial"}, said);
    ExpectDone({"convert", "--verbose", file, out, "--accept-partial"}, said);
    ExpectDone({"convert", file, out, "--accept-partial", "--verbose"}, said);
}

TEST(Messages, AnotherMessageComesAfterTheCount) {
    const TemporaryFolder folder;
    const std::string file = folder.Write("empty.pcx", EmptyPcx(2)).string();
    ExpectFailed({"convert", file, folder / "x.zfile", "--accept-partial"},
                 Folded(file, 6) + PartialLine(file, 0, 2) +
                     ErrorLine(folder / "x.zfile", "cannot be written: .zfile files cannot be read back"));
}

TEST(Messages, FilesWorkedOnAtTheSameTimeDoNotMixTheirCounts) {
    const TemporaryFolder folder;
    Words line = {"convert", "--accept-partial", "--jobs", "4"};
    std::string expected;
    for (int rows = 1; rows <= 12; ++rows) {
        const std::string file = folder.Write(std::format("{}.pcx", rows), EmptyPcx(rows)).string();
        line.push_back(file);
        expected += Folded(file, 3 * rows) + PartialLine(file, 0, rows);
    }
    ExpectDone(Joined({line, {folder / "out", "--to", "png"}}), expected + "kavra: 12 written\n");
}

TEST(Messages, TheJsonOfADumpFoldsItsWarningsAlike) {
    const TemporaryFolder folder;
    const std::string file = folder.Write("empty.pcx", EmptyPcx(4)).string();
    const Words line = {"dump", file, "--out", folder / "block", "--json", "--accept-partial"};
    const std::string taken = "ends early: 0 of 4 rows are there; what is there was taken";
    EXPECT_EQ(Json::parse(ExpectDone(line, Folded(file, 12) + PartialLine(file, 0, 4)))["warnings"],
              Json({kOutOfData, kOutOfData, kOutOfData, kOutOfData + " (9 more)", taken}));
    EXPECT_EQ(
        Json::parse(ExpectDone(Joined({line, {"--verbose"}}), Lines(file, 12) + PartialLine(file, 0, 4)))["warnings"],
        Json(Joined({Words(12, kOutOfData), {taken}})));
}
