#include "readers/ccitt/CcittCodes.h"

#include <gtest/gtest.h>

#include <map>
#include <set>
#include <string>

namespace {

using namespace Kavra::Devices::Ccitt;

using Words = std::map<std::string, TableEntry>;

TableEntry Entry(State state, CodeWord word, int parameter) {
    return {state, static_cast<std::uint8_t>(word.size()), static_cast<std::uint16_t>(parameter)};
}

void Add(Words& words, State state, CodeWord word, int parameter) {
    EXPECT_TRUE(words.emplace(word, Entry(state, word, parameter)).second) << word << " twice";
}

template <std::size_t Count>
void AddRuns(Words& words, State state, const std::array<CodeWord, Count>& list, int first, int step) {
    for (std::size_t i = 0; i < Count; ++i)
        Add(words, state, list[i], first + static_cast<int>(i) * step);
}

Words RunWords(bool black) {
    Words words;
    AddRuns(words, black ? State::kBlackTerminating : State::kWhiteTerminating,
            black ? kBlackTerminating : kWhiteTerminating, 0, 1);
    AddRuns(words, black ? State::kBlackMakeUp : State::kWhiteMakeUp, black ? kBlackMakeUp : kWhiteMakeUp, 64, 64);
    AddRuns(words, State::kCommonMakeUp, kCommonMakeUp, 1792, 64);
    Add(words, State::kEndOfLine, "00000000000", 0);
    return words;
}

/// Takes one bit of the index after another until they are a word.
TableEntry Walk(const Words& words, std::size_t index, int bits) {
    std::string read;
    for (int bit = 0; bit < bits; ++bit) {
        read += (index >> bit & 1) != 0 ? '1' : '0';
        if (const auto found = words.find(read); found != words.end()) return found->second;
    }
    return {};
}

template <std::size_t Size>
void ExpectTable(const std::array<TableEntry, Size>& table, const Words& words, int bits) {
    ASSERT_EQ(Size, std::size_t{1} << bits);
    for (std::size_t index = 0; index < Size; ++index)
        EXPECT_EQ(table[index], Walk(words, index, bits)) << index;
}

TEST(CcittTables, TheMainTableHoldsTheTwoDimensionalCodesAndIsComplete) {
    Words words;
    Add(words, State::kPass, "0001", 0);
    Add(words, State::kHorizontal, "001", 0);
    Add(words, State::kVertical, "1", 0);
    AddRuns(words, State::kVerticalRight, kVerticalRight, 1, 1);
    AddRuns(words, State::kVerticalLeft, kVerticalLeft, 1, 1);
    Add(words, State::kExtension, "0000001", 0);
    Add(words, State::kEndOfLine, "0000000", 0);
    EXPECT_EQ(words.size(), 11U);
    ExpectTable(kMainTable, words, 7);
    for (const TableEntry& entry : kMainTable)
        EXPECT_NE(entry.state, State::kInvalid);
}

TEST(CcittTables, TheRunTablesHoldTheRunLengthCodes) {
    ExpectTable(kWhiteTable, RunWords(false), 12);
    ExpectTable(kBlackTable, RunWords(true), 13);
}

TEST(CcittTables, NoWordBeginsAnother) {
    for (const bool black : {false, true}) {
        const Words words = RunWords(black);
        for (const auto& [word, entry] : words) {
            for (std::size_t length = 1; length < word.size(); ++length)
                EXPECT_FALSE(words.contains(word.substr(0, length))) << word;
        }
    }
}

TEST(CcittTables, OnlyEightToTenZerosAndAOneAreNoRunLength) {
    // The words leave nothing else open: 1/2^9 + 1/2^10 + 1/2^11 of all indices.
    EXPECT_EQ(std::ranges::count(kWhiteTable, State::kInvalid, &TableEntry::state), 8 + 4 + 2);
    EXPECT_EQ(std::ranges::count(kBlackTable, State::kInvalid, &TableEntry::state), 16 + 8 + 4);
    for (const std::size_t index : {0x100U, 0x200U, 0x400U, 0xF00U}) {
        EXPECT_EQ(kWhiteTable[index].state, State::kInvalid) << index;
        EXPECT_EQ(kBlackTable[index].state, State::kInvalid) << index;
    }
}

TEST(CcittTables, EntriesThatAreKnown) {
    EXPECT_EQ(kMainTable[0], (TableEntry{State{12}, 7, 0}));
    EXPECT_EQ(kMainTable[1], (TableEntry{State{3}, 1, 0}));
    EXPECT_EQ(kMainTable[2], (TableEntry{State{5}, 3, 1}));
    EXPECT_EQ(kMainTable[4], (TableEntry{State{2}, 3, 0}));
    EXPECT_EQ(kMainTable[6], (TableEntry{State{4}, 3, 1}));
    EXPECT_EQ(kMainTable[8], (TableEntry{State{1}, 4, 0}));
    EXPECT_EQ(kMainTable[64], (TableEntry{State{6}, 7, 0}));
    EXPECT_EQ(kMainTable[127], (TableEntry{State{3}, 1, 0})) << "words repeat with every ending";
    EXPECT_EQ(kWhiteTable[1], (TableEntry{State{7}, 4, 3}));
    EXPECT_EQ(kBlackTable[1], (TableEntry{State{8}, 2, 3}));
}

TEST(CcittTables, RunsOfAFaxLineInBothColours) {
    // 1728 white pixels: 010011011 and 00110101. 1728 black ones: 0000001100101 and 0000110111.
    EXPECT_EQ(kWhiteTable[0b110110010], (TableEntry{State{9}, 9, 1728}));
    EXPECT_EQ(kWhiteTable[0b10101100], (TableEntry{State{7}, 8, 0}));
    EXPECT_EQ(kBlackTable[0b1010011000000], (TableEntry{State{10}, 13, 1728}));
    EXPECT_EQ(kBlackTable[0b1110110000], (TableEntry{State{8}, 10, 0}));
    EXPECT_EQ(kWhiteTable[0b111110000000], (TableEntry{State{11}, 12, 2560}));
    EXPECT_EQ(kBlackTable[0b111110000000], (TableEntry{State{11}, 12, 2560}));
}

}  // namespace
