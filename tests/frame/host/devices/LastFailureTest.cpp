#include <kavra/devices/LastFailure.h>

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <thread>

namespace {

using namespace Kavra::Devices;

/// No test leaves a failure behind.
class LastFailureOfThread : public testing::Test {
protected:
    LastFailureOfThread() { ClearLastFailure(); }
    ~LastFailureOfThread() override { ClearLastFailure(); }
};

FailureReport Of(EFailureKind kind, const char* text) {
    FailureReport report;
    report.kind = kind;
    report.text = text;
    return report;
}

TEST_F(LastFailureOfThread, IsNoneWithAnEmptyTextWhereNothingFailed) {
    const FailureReport report = LastFailure();
    EXPECT_EQ(report.kind, kFailureNone);
    EXPECT_STREQ(report.text, "");
    EXPECT_LT(report.position, 0);
    EXPECT_LT(report.goodRows, 0);
    EXPECT_LT(report.rows, 0);
}

TEST_F(LastFailureOfThread, KeepsACopyOfTheText) {
    std::string text = "ends early: 37 of 120 rows";
    FailureReport report = Of(kFailureEndsEarly, text.c_str());
    report.goodRows = 37;
    report.rows = 120;
    SetLastFailure(report);
    text.assign(text.size(), 'x');
    EXPECT_EQ(LastFailure().kind, kFailureEndsEarly);
    EXPECT_STREQ(LastFailure().text, "ends early: 37 of 120 rows");
    EXPECT_EQ(LastFailure().goodRows, 37);
    EXPECT_EQ(LastFailure().rows, 120);
}

TEST_F(LastFailureOfThread, IsTheFirstThatWasSaidSinceTheLastClearing) {
    SetLastFailure(Of(kFailureNoSuchFile, "there is no such file"));
    SetLastFailure(Of(kFailureOther, "cannot be read"));
    EXPECT_EQ(LastFailure().kind, kFailureNoSuchFile);
    ClearLastFailure();
    SetLastFailure(Of(kFailureOther, "cannot be read"));
    EXPECT_EQ(LastFailure().kind, kFailureOther);
}

TEST_F(LastFailureOfThread, CutsALongTextAndNoCharacterOfIt) {
    const std::string tail = "\xC3\xA9";  // two bytes, of which the limit parts the first 1,023
    SetLastFailure(Of(kFailureOther, (std::string(1022, 'a') + tail + "b").c_str()));
    EXPECT_EQ(LastFailure().text, std::string(1022, 'a'));
    ClearLastFailure();
    SetLastFailure(Of(kFailureOther, (std::string(1021, 'a') + tail + "b").c_str()));
    EXPECT_EQ(LastFailure().text, std::string(1021, 'a') + tail);
}

TEST_F(LastFailureOfThread, ANullTextIsEmpty) {
    SetLastFailure(Of(kFailureOther, nullptr));
    EXPECT_STREQ(LastFailure().text, "");
    EXPECT_EQ(LastFailure().kind, kFailureOther);
}

TEST_F(LastFailureOfThread, FillsNoMoreThanTheCallerKnows) {
    FailureReport report = Of(kFailureEndsEarly, "ends early");
    report.rows = 9;
    SetLastFailure(report);
    FailureReport older;
    older.size = static_cast<std::uint32_t>(offsetof(FailureReport, rows));
    GetLastFailure(older);
    EXPECT_EQ(older.kind, kFailureEndsEarly);
    EXPECT_EQ(older.rows, -1);
}

TEST_F(LastFailureOfThread, IsEachThreadsOwn) {
    SetLastFailure(Of(kFailureOther, "cannot be read"));
    std::thread([] { EXPECT_EQ(LastFailure().kind, kFailureNone); }).join();
}

}  // namespace
