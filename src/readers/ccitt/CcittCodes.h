/// The code words of fax compression, as ITU-T Recommendations T.4 and T.6 list them, and the tables in which what the
/// next bits mean is looked up at one stroke.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace Kavra::Devices::Ccitt {

/// Bits in the order of transmission.
using CodeWord = std::string_view;

// T.4 table 2: runs of 0 to 63 pixels, one code word each.

inline constexpr std::array<CodeWord, 64> kWhiteTerminating = {
    "00110101", "000111",   "0111",     "1000",     "1011",     "1100",      //
    "1110",     "1111",     "10011",    "10100",    "00111",    "01000",     //
    "001000",   "000011",   "110100",   "110101",   "101010",   "101011",    //
    "0100111",  "0001100",  "0001000",  "0010111",  "0000011",  "0000100",   //
    "0101000",  "0101011",  "0010011",  "0100100",  "0011000",  "00000010",  //
    "00000011", "00011010", "00011011", "00010010", "00010011", "00010100",  //
    "00010101", "00010110", "00010111", "00101000", "00101001", "00101010",  //
    "00101011", "00101100", "00101101", "00000100", "00000101", "00001010",  //
    "00001011", "01010010", "01010011", "01010100", "01010101", "00100100",  //
    "00100101", "01011000", "01011001", "01011010", "01011011", "01001010",  //
    "01001011", "00110010", "00110011", "00110100",                          //
};

inline constexpr std::array<CodeWord, 64> kBlackTerminating = {
    "0000110111",   "010",          "11",           "10",           "011",          "0011",          //
    "0010",         "00011",        "000101",       "000100",       "0000100",      "0000101",       //
    "0000111",      "00000100",     "00000111",     "000011000",    "0000010111",   "0000011000",    //
    "0000001000",   "00001100111",  "00001101000",  "00001101100",  "00000110111",  "00000101000",   //
    "00000010111",  "00000011000",  "000011001010", "000011001011", "000011001100", "000011001101",  //
    "000001101000", "000001101001", "000001101010", "000001101011", "000011010010", "000011010011",  //
    "000011010100", "000011010101", "000011010110", "000011010111", "000001101100", "000001101101",  //
    "000011011010", "000011011011", "000001010100", "000001010101", "000001010110", "000001010111",  //
    "000001100100", "000001100101", "000001010010", "000001010011", "000000100100", "000000110111",  //
    "000000111000", "000000100111", "000000101000", "000001011000", "000001011001", "000000101011",  //
    "000000101100", "000001011010", "000001100110", "000001100111",                                  //
};

// T.4 table 3a: runs of 64, 128, ... 1728 pixels, which a terminating code word follows.

inline constexpr std::array<CodeWord, 27> kWhiteMakeUp = {
    "11011",     "10010",     "010111",    "0110111",   "00110110",  "00110111",   //
    "01100100",  "01100101",  "01101000",  "01100111",  "011001100", "011001101",  //
    "011010010", "011010011", "011010100", "011010101", "011010110", "011010111",  //
    "011011000", "011011001", "011011010", "011011011", "010011000", "010011001",  //
    "010011010", "011000",    "010011011",                                         //
};

inline constexpr std::array<CodeWord, 27> kBlackMakeUp = {
    "0000001111",    "000011001000",  "000011001001",  "000001011011",  "000000110011",  "000000110100",   //
    "000000110101",  "0000001101100", "0000001101101", "0000001001010", "0000001001011", "0000001001100",  //
    "0000001001101", "0000001110010", "0000001110011", "0000001110100", "0000001110101", "0000001110110",  //
    "0000001110111", "0000001010010", "0000001010011", "0000001010100", "0000001010101", "0000001011010",  //
    "0000001011011", "0000001100100", "0000001100101",                                                     //
};

// T.4 table 3b: runs of 1792, 1856, ... 2560 pixels of either colour.

inline constexpr std::array<CodeWord, 13> kCommonMakeUp = {
    "00000001000",  "00000001100",  "00000001101",  "000000010010", "000000010011", "000000010100",  //
    "000000010101", "000000010110", "000000010111", "000000011100", "000000011101", "000000011110",  //
    "000000011111",                                                                                  //
};

/// Make-up code words count in this unit.
inline constexpr int kMakeUpUnit = 64;
inline constexpr int kFirstCommonMakeUp = 1792;

// T.6 table 1: where the next change of colour lies.

inline constexpr CodeWord kPass = "0001";
inline constexpr CodeWord kHorizontal = "001";
/// Straight below the reference row's change.
inline constexpr CodeWord kVertical = "1";
/// One to three pixels right of it, and left of it.
inline constexpr std::array<CodeWord, 3> kVerticalRight = {"011", "000011", "0000011"};
inline constexpr std::array<CodeWord, 3> kVerticalLeft = {"010", "000010", "0000010"};
inline constexpr CodeWord kExtension = "0000001";

/// The end of a line is eleven zeros or more and a one.
inline constexpr std::size_t kEndOfLineZeros = 11;
inline constexpr CodeWord kEndOfLine = "000000000001";

/// What a code word tells the decoder to do.
enum class State : std::uint8_t {
    kInvalid = 0,
    kPass = 1,
    kHorizontal = 2,
    kVertical = 3,
    kVerticalRight = 4,  ///< by `parameter` pixels
    kVerticalLeft = 5,   ///< by `parameter` pixels
    kExtension = 6,
    kWhiteTerminating = 7,  ///< a run of `parameter` pixels, or the rest of one
    kBlackTerminating = 8,
    kWhiteMakeUp = 9,  ///< `parameter` pixels of a run that goes on
    kBlackMakeUp = 10,
    kCommonMakeUp = 11,
    kEndOfLine = 12,
};

struct TableEntry {
    State state = State::kInvalid;
    std::uint8_t length = 0;  ///< bits of the code word
    std::uint16_t parameter = 0;

    bool operator==(const TableEntry&) const = default;
};

/// Tables are indexed by the next bits of the data, the first of them lowest. A code word that is shorter than the
/// index stands at every index that begins with it.
inline constexpr int kMainBits = 7;
inline constexpr int kWhiteBits = 12;
inline constexpr int kBlackBits = 13;

/// Two-dimensional coding. The zeros that an end of line begins with stand at 0; there is no invalid entry.
extern const std::array<TableEntry, 1 << kMainBits> kMainTable;

/// Run lengths. The entry of an end of line covers its first eleven zeros, which any number of further ones may follow.
extern const std::array<TableEntry, 1 << kWhiteBits> kWhiteTable;
extern const std::array<TableEntry, 1 << kBlackBits> kBlackTable;

}  // namespace Kavra::Devices::Ccitt
