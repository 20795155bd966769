#include "BatchLog.h"

#include "Results.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <charconv>
#include <cmath>
#include <format>
#include <fstream>
#include <system_error>

namespace Kavra::App {
namespace {

std::string ErrorText(int error) {
    return std::generic_category().message(error);
}

/// Whether a log is empty or ends as one does. A line that a full disk has cut must not take the next one with it.
bool EndsInLine(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    file.seekg(-1, std::ios::end);
    return !file || file.get() == '\n';
}

/// The status, as far as it says whether to try again.
std::string StatusOf(const Json& line) {
    const auto status = line.find("status");
    return status != line.end() && status->is_string() ? status->get<std::string>() : std::string();
}

}  // namespace

std::uint64_t StableHash(std::string_view bytes) {
    constexpr std::uint64_t kStart = 0xCBF29CE484222325, kPrime = 0x100000001B3;
    constexpr std::uint64_t kFirst = 0xFF51AFD7ED558CCD, kSecond = 0xC4CEB9FE1A85EC53;
    constexpr int kHalf = 33;
    std::uint64_t hash = kStart;
    for (const char c : bytes)
        hash = (hash ^ static_cast<unsigned char>(c)) * kPrime;
    hash = (hash ^ (hash >> kHalf)) * kFirst;
    hash = (hash ^ (hash >> kHalf)) * kSecond;
    return hash ^ (hash >> kHalf);
}

std::uint64_t KeyOf(const std::string& file, std::uint64_t settings) {
    struct stat status{};
    const bool isThere = stat(file.c_str(), &status) == 0;
    const std::string state =
        isThere ? std::format("{} {} {}", status.st_size, status.st_mtim.tv_sec, status.st_mtim.tv_nsec)
                : std::string("none");
    return StableHash(std::format("{:016x} {} ", settings, state) + file);
}

BatchLog::~BatchLog() {
    if (mFile >= 0) close(mFile);
}

std::string BatchLog::Open(const std::filesystem::path& path) {
    constexpr mode_t kAll = S_IRUSR | S_IWUSR | S_IRGRP | S_IWGRP | S_IROTH | S_IWOTH;
    mFile = open(path.c_str(), O_WRONLY | O_APPEND | O_CREAT | O_CLOEXEC, kAll);
    if (mFile < 0) return ErrorText(errno);
    if (!EndsInLine(path) && write(mFile, "\n", 1) != 1) return ErrorText(errno);
    return {};
}

void BatchLog::ReadDone(const std::filesystem::path& path, bool retries) {
    constexpr int kHexadecimal = 16;
    std::ifstream file(path, std::ios::binary);
    for (std::string text; std::getline(file, text);) {
        const Json line = Json::parse(text, nullptr, false);
        if (!line.is_object() || !line.contains("key") || !line["key"].is_string()) continue;
        const std::string status = StatusOf(line), digits = line["key"];
        std::uint64_t key = 0;
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), key, kHexadecimal);
        if (error != std::errc() || status.empty() || status == "again" || status == "planned") continue;
        if (status == "failed" && retries) {
            mDone.erase(key);
        } else {
            mDone.insert(key);
        }
    }
}

void BatchLog::Add(const Report& report, const WorkFacts& facts, std::uint64_t settings) {
    if (mFile < 0) return;
    Json line = WorkJson(report);
    std::uint64_t bytes = 0;
    for (const std::string& output : report.work.written) {
        std::error_code failed;
        const std::uintmax_t size = std::filesystem::file_size(output, failed);
        bytes += failed ? 0 : size;
    }
    if (report.Failed() && facts.isTemporary) line["status"] = "again";
    if (facts.goodRows >= 0) line["goodRows"] = facts.goodRows;
    line["ms"] = std::round(facts.milliseconds * 1000) / 1000;
    line["bytes"] = bytes;
    line["settings"] = std::format("{:016x}", settings);
    line["key"] = std::format("{:016x}", KeyOf(report.File(), settings));
    // As it is printed elsewhere, with the bytes of names that are no text, but in one line.
    const std::string text = Json::parse(JsonText(line)).dump() + "\n";
    const ssize_t written = write(mFile, text.data(), text.size());
    if (written != static_cast<ssize_t>(text.size())) mLoss = ErrorText(written < 0 ? errno : ENOSPC);
}

}  // namespace Kavra::App
