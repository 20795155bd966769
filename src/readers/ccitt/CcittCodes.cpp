#include "readers/ccitt/CcittCodes.h"

namespace Kavra::Devices::Ccitt {

namespace {

template <std::size_t Size>
constexpr void Enter(std::array<TableEntry, Size>& table, CodeWord word, State state, std::size_t parameter) {
    std::size_t index = 0;
    for (std::size_t bit = 0; bit < word.size(); ++bit) {
        if (word[bit] == '1') index |= std::size_t{1} << bit;
    }
    const TableEntry entry = {.state = state,
                              .length = static_cast<std::uint8_t>(word.size()),
                              .parameter = static_cast<std::uint16_t>(parameter)};
    for (; index < Size; index += std::size_t{1} << word.size())
        table[index] = entry;
}

/// Enters words whose parameters are `first`, `first` + `step` ...
template <std::size_t Size, std::size_t Words>
constexpr void EnterAll(std::array<TableEntry, Size>& table, const std::array<CodeWord, Words>& words, State state,
                        std::size_t first, std::size_t step) {
    for (std::size_t i = 0; i < Words; ++i)
        Enter(table, words[i], state, first + i * step);
}

consteval auto MakeMainTable() {
    std::array<TableEntry, 1 << kMainBits> table{};
    Enter(table, kPass, State::kPass, 0);
    Enter(table, kHorizontal, State::kHorizontal, 0);
    Enter(table, kVertical, State::kVertical, 0);
    EnterAll(table, kVerticalRight, State::kVerticalRight, 1, 1);
    EnterAll(table, kVerticalLeft, State::kVerticalLeft, 1, 1);
    Enter(table, kExtension, State::kExtension, 0);
    Enter(table, kEndOfLine.substr(0, kMainBits), State::kEndOfLine, 0);
    return table;
}

template <std::size_t Bits>
consteval auto MakeRunTable(const std::array<CodeWord, 64>& terminating, State terminatingState,
                            const std::array<CodeWord, 27>& makeUp, State makeUpState) {
    std::array<TableEntry, std::size_t{1} << Bits> table{};
    EnterAll(table, terminating, terminatingState, 0, 1);
    EnterAll(table, makeUp, makeUpState, kMakeUpUnit, kMakeUpUnit);
    EnterAll(table, kCommonMakeUp, State::kCommonMakeUp, kFirstCommonMakeUp, kMakeUpUnit);
    Enter(table, kEndOfLine.substr(0, kEndOfLineZeros), State::kEndOfLine, 0);
    return table;
}

}  // namespace

constexpr std::array<TableEntry, 1 << kMainBits> kMainTable = MakeMainTable();
constexpr std::array<TableEntry, 1 << kWhiteBits> kWhiteTable =
    MakeRunTable<kWhiteBits>(kWhiteTerminating, State::kWhiteTerminating, kWhiteMakeUp, State::kWhiteMakeUp);
constexpr std::array<TableEntry, 1 << kBlackBits> kBlackTable =
    MakeRunTable<kBlackBits>(kBlackTerminating, State::kBlackTerminating, kBlackMakeUp, State::kBlackMakeUp);

}  // namespace Kavra::Devices::Ccitt
