#include "app/Answers.h"

#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <format>

namespace Kavra::Tests {
namespace {

std::string FileLine(const std::filesystem::path& file, const char* kind, const std::string& text) {
    return std::format("kavra: {}: {}: {}\n", file.string(), kind, text);
}

std::string ExpectAnswer(const Words& line, int status, const std::string& said) {
    ProgramResult result = RunKavra(line);
    EXPECT_EQ(result.status, status) << testing::PrintToString(line);
    EXPECT_EQ(result.error, said) << testing::PrintToString(line);
    return result.out;
}

}  // namespace

Words Joined(std::initializer_list<Words> parts) {
    Words all;
    for (const Words& part : parts)
        all.insert(all.end(), part.begin(), part.end());
    return all;
}

std::string ErrorLine(const std::filesystem::path& file, const std::string& text) {
    return FileLine(file, "error", text);
}

std::string WarningLine(const std::filesystem::path& file, const std::string& text) {
    return FileLine(file, "warning", text);
}

std::string NoteLine(const std::filesystem::path& file, const std::string& text) {
    return FileLine(file, "note", text);
}

std::string PartialLine(const std::filesystem::path& file, int goodRows, int rows) {
    return WarningLine(file,
                       std::format("ends early: {} of {} rows are there; what is there was taken", goodRows, rows));
}

std::string UnreadableLine(const std::filesystem::path& file) {
    return WarningLine(file, "format is not supported") + ErrorLine(file, "it is text, not an image");
}

std::string ExpectDone(const Words& line, const std::string& said) {
    return ExpectAnswer(line, 0, said);
}

std::string ExpectFailed(const Words& line, const std::string& said) {
    return ExpectAnswer(line, 1, said);
}

void ExpectWrongUsage(const Words& line, const std::string& said) {
    EXPECT_EQ(ExpectAnswer(line, 2, "kavra: " + said + "\n"), "") << testing::PrintToString(line);
}

Json Described(const std::filesystem::path& file) {
    const Json files = Json::parse(ExpectDone({"info", "--json", file}));
    EXPECT_EQ(files.size(), 1U);
    return files[0];
}

std::vector<unsigned char> Dumped(const std::filesystem::path& file, const Words& more) {
    const TemporaryFolder folder;
    ExpectDone(Joined({{"dump", file, "--out", folder / "block"}, more}));
    return ReadAll(folder / "block");
}

std::string TextOf(const std::filesystem::path& file) {
    const std::vector<unsigned char> bytes = ReadAll(file);
    return {bytes.begin(), bytes.end()};
}

Words NamesIn(const std::filesystem::path& folder) {
    Words names;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        names.push_back(entry.path().filename());
    std::ranges::sort(names);
    return names;
}

}  // namespace Kavra::Tests
