#include "readers/TextScanner.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cmath>
#include <limits>
#include <string>

namespace {

using namespace Kavra::Devices;

constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();

std::optional<std::int32_t> Integer(std::string_view text) {
    return TextScanner(text).Integer();
}

std::optional<double> Real(std::string_view text) {
    return TextScanner(text).Real();
}

TEST(TextScanner, AnIntegerIsDigitsAfterWhiteSpaceAndASign) {
    EXPECT_EQ(Integer("17"), 17);
    EXPECT_EQ(Integer(" \t\n\v\f\r17rest"), 17);
    EXPECT_EQ(Integer("-17"), -17);
    EXPECT_EQ(Integer("+017"), 17);
    EXPECT_EQ(Integer("0x11"), 0) << "decimal only";
}

TEST(TextScanner, WithoutDigitsThereIsNoInteger) {
    for (const char* text : {"", "   ", "x1", "-", "+", "- 1", "+-1", ".5"})
        EXPECT_EQ(Integer(text), std::nullopt) << text;
}

TEST(TextScanner, IntegersBeyond32BitsBecomeTheNearestThatFits) {
    EXPECT_EQ(Integer("2147483647"), kMax);
    EXPECT_EQ(Integer("2147483648"), kMax);
    EXPECT_EQ(Integer("-2147483648"), kMin);
    EXPECT_EQ(Integer("-2147483649"), kMin);
    EXPECT_EQ(Integer("4294967297"), kMax);
    EXPECT_EQ(Integer(std::string(5000, '9')), kMax);
    EXPECT_EQ(Integer("-" + std::string(5000, '9')), kMin);
}

TEST(TextScanner, GoesOnBehindWhatItTook) {
    TextScanner scanner("1-2 three\n4");
    EXPECT_EQ(scanner.Integer(), 1);
    EXPECT_EQ(scanner.Integer(), -2);
    EXPECT_EQ(scanner.Integer(), std::nullopt);
    EXPECT_EQ(scanner.Word(10), "three") << "a failed conversion takes nothing";
    EXPECT_EQ(scanner.Integer(), 4);
    EXPECT_EQ(scanner.Integer(), std::nullopt);
}

TEST(TextScanner, NeverReadsPastItsText) {
    const std::string_view text = "123456";
    EXPECT_EQ(Integer(text.substr(0, 3)), 123);
    EXPECT_EQ(Real(text.substr(0, 3)), 123.0);
    EXPECT_EQ(TextScanner(text.substr(0, 3)).Word(10), "123");
}

TEST(TextScanner, AWordEndsAtWhiteSpaceOrItsWidth) {
    EXPECT_EQ(TextScanner("  \r\nBIL\r\n").Word(10), "BIL");
    TextScanner scanner("abcdefgh");
    EXPECT_EQ(scanner.Word(3), "abc");
    EXPECT_EQ(scanner.Word(100), "defgh");
    EXPECT_EQ(scanner.Word(100), std::nullopt);
    EXPECT_EQ(TextScanner(" \n").Word(5), std::nullopt);
}

TEST(TextScanner, ALineEndsAtItsFeedOrItsWidth) {
    TextScanner scanner("\n  Old Hawaii Datum \t\r\nNAD27");
    EXPECT_EQ(scanner.Line(63), "Old Hawaii Datum");
    EXPECT_EQ(scanner.Line(3), "NAD");
    EXPECT_EQ(scanner.Line(3), std::nullopt);
    EXPECT_EQ(TextScanner(" \n ").Line(5), std::nullopt);
}

TEST(TextScanner, ReadsRealsInEveryForm) {
    EXPECT_EQ(Real(" 30.5x"), 30.5);
    EXPECT_EQ(Real("-.25"), -0.25);
    EXPECT_EQ(Real("+1e3"), 1000.0);
    EXPECT_EQ(Real("\n5."), 5.0);
    EXPECT_EQ(Real("0x10"), 16.0);
    EXPECT_EQ(Real("x"), std::nullopt);
    EXPECT_EQ(Real(""), std::nullopt);
    EXPECT_EQ(Real("1e999"), std::numeric_limits<double>::infinity());
    EXPECT_EQ(Real("1e-999"), 0.0);
    EXPECT_TRUE(std::isnan(Real("nan").value()));
    EXPECT_EQ(Real("1,5"), 1.0);
}

TEST(TextScanner, GoesOnBehindAReal) {
    TextScanner scanner(" 1.5x2");
    EXPECT_EQ(scanner.Real(), 1.5);
    EXPECT_EQ(scanner.Word(9), "x2");
}

TEST(TextScanner, EqualityIgnoresTheCaseOfLettersOnly) {
    EXPECT_TRUE(EqualNoCase("MoToRoLa", "MOTOROLA"));
    EXPECT_TRUE(EqualNoCase("", ""));
    EXPECT_FALSE(EqualNoCase("MOTOROLA", "MOTOROL"));
    EXPECT_FALSE(EqualNoCase("[", "{"));
    EXPECT_FALSE(EqualNoCase("@", "`"));
}

}  // namespace
