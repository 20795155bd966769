#include "common/Boundary.h"
#include "common/ByteSource.h"
#include "common/ParallelRange.h"
#include "common/PathReasons.h"
#include "common/Reasons.h"

#include <gtest/gtest.h>

#include <array>
#include <cerrno>
#include <new>
#include <stdexcept>
#include <string>

using namespace Kavra::Common;
using namespace Kavra::Devices;

namespace {

/// What an operation leaves that does `body`.
template <class Body>
FailureReport After(const Body& body) {
    (void)AsOperation(false, body);
    return LastFailure();
}

}  // namespace

TEST(Reasons, AnOperationWithoutAnAnswerOrAReasonHasWordsAllTheSame) {
    const FailureReport report = After([] { return false; });
    EXPECT_EQ(report.kind, kFailureOther);
    EXPECT_STRNE(report.text, "");
}

TEST(Reasons, AnAnswerForgetsWhatWasSaidOnTheWayButNotThatTheFileEndedEarly) {
    EXPECT_EQ(After([] { return Say(kFailureDamaged, "damaged"), true; }).kind, kFailureNone);
    EXPECT_EQ(After([] { return SayEndsEarly(3, 10, 99), true; }).kind, kFailureEndsEarly);
    EXPECT_EQ(LastFailure().goodRows, 3);
    EXPECT_EQ(LastFailure().rows, 10);
    EXPECT_EQ(LastFailure().position, 99);
}

TEST(Reasons, TheFirstReasonStays) {
    const FailureReport report = After([] {
        Say(kFailureDamaged, "first");
        return Require(false, kFailureOther, "second");
    });
    EXPECT_STREQ(report.text, "first");
}

TEST(Reasons, AnInnerOperationNeitherClearsNorForgets) {
    const FailureReport report = After([] {
        Say(kFailureDamaged, "first");
        (void)AsOperation(false, [] { return true; });
        return false;
    });
    EXPECT_STREQ(report.text, "first");
}

TEST(Reasons, AnInnerOperationWithoutAReasonLeavesRoomForABetterOne) {
    const FailureReport report = After([] {
        (void)AsOperation(false, [] { return false; });
        return Require(false, kFailureTooLarge, "too large");
    });
    EXPECT_EQ(report.kind, kFailureTooLarge);
}

TEST(Reasons, ExceptionsAreReasons) {
    EXPECT_EQ(After([]() -> bool { throw std::bad_alloc(); }).kind, kFailureOutOfMemory);
    const FailureReport report = After([]() -> bool { throw std::runtime_error("it\nbroke."); });
    EXPECT_EQ(report.kind, kFailureOther);
    EXPECT_STREQ(report.text, "it broke");
    EXPECT_EQ(After([]() -> bool { throw 42; }).kind, kFailureOther);
}

TEST(Reasons, AnExceptionThatPassesIsAReasonToo) {
    EXPECT_THROW((void)InOperation([]() -> bool { throw std::bad_alloc(); }), std::bad_alloc);
    EXPECT_EQ(LastFailure().kind, kFailureOutOfMemory);
    EXPECT_EQ(After([] { return true; }).kind, kFailureNone) << "the operation before has ended";
}

TEST(Reasons, MemoryThatFailsOnAWorkerThreadIsTheCallersReason) {
    const FailureReport report = After([] {
        ForEachRange(1000, 0, [](std::size_t begin, std::size_t) {
            if (begin > 0) throw std::bad_alloc();
        });
        ForEachRange(1, 1, [](std::size_t, std::size_t) { throw std::bad_alloc(); });  // where there is but one core
        return true;
    });
    EXPECT_EQ(report.kind, kFailureOutOfMemory);
}

TEST(Reasons, AnOperationThatIsNeitherTrueNorNullHasAnsweredWhereNothingWasSaid) {
    EXPECT_EQ(AsOperation(0U, [] { return 0U; }), 0U);
    EXPECT_EQ(LastFailure().kind, kFailureNone);
    EXPECT_EQ(AsOperation(0U, [] { return Say(kFailureArguments, "nowhere"), 0U; }), 0U);
    EXPECT_EQ(LastFailure().kind, kFailureArguments);
}

TEST(Reasons, FailuresOfOneKindAreEqualWhereverTheyAre) {
    EXPECT_EQ(Failure(Failure::kTruncated, 7), Failure::kTruncated);
    EXPECT_NE(Failure(Failure::kTruncated, 7), Failure::kMalformed);
}

TEST(Reasons, AByteThatIsNotThereTellsWhereTheFileEnds) {
    const std::array<unsigned char, 10> bytes{};
    ByteSource source(bytes);
    EXPECT_EQ(source.Seek(11).error().position, 10);
    ASSERT_TRUE(source.Seek(4));
    auto slice = source.Slice(3);
    ASSERT_TRUE(slice);
    EXPECT_EQ(slice->Big<std::uint32_t>().error().position, 7) << "in the whole, not in the slice";
    EXPECT_EQ(slice->Again().Skip(9).error().position, 7);
}

TEST(Reasons, AFailureSaysItsPlaceOrItsRows) {
    EXPECT_STREQ(After([] { return Say({Failure::kMalformed, 12}), false; }).text, "damaged at byte 12");
    EXPECT_STREQ(After([] { return SayEndsEarly(37, 120, 5), false; }).text, "ends early: 37 of 120 rows are there");
    EXPECT_STREQ(After([] { return Say(Failure::kTruncated), false; }).text, "ends early");
}

TEST(Reasons, ATextOfALibraryBecomesOneLineWithoutControlCharacters) {
    EXPECT_EQ(OneLine(" a\n\tb \x1B[31m.\n"), "a b \\x1B[31m");
    EXPECT_EQ(OneLine("\xFFz\xC3\xA9"), "\\xFFz\xC3\xA9");
    EXPECT_EQ(OneLine("Could not open \"/t/a.png\"", "/t/a.png"), "Could not open");
    EXPECT_EQ(OneLine("/t/a.png: no such thing", "/t/a.png"), "no such thing");
    EXPECT_EQ(OneLine(""), "");
}

TEST(Reasons, AFullDiskIsToldFromOtherFailures) {
    EXPECT_EQ(After([] { return SayOfWriting(ENOSPC), false; }).kind, kFailureDiskFull);
    EXPECT_EQ(After([] { return SayOfWriting(EDQUOT), false; }).kind, kFailureDiskFull);
    EXPECT_EQ(After([] { return SayOfWriting(EIO), false; }).kind, kFailureCannotWrite);
    EXPECT_EQ(After([] { return SayOfPathToWrite(L"/tmp/x.png", ENOSPC), false; }).kind, kFailureDiskFull);
}
