#include "Messages.h"

#include <kavra/objects/OS.h>
#include <kavra/objects/ObjModel.h>

#include <cstdio>
#include <format>

namespace Kavra::App {
namespace {

thread_local MessageScope* currentScope = nullptr;

void WriteAll(std::FILE* stream, std::string_view text) {
    std::fwrite(text.data(), 1, text.size(), stream);
}

}  // namespace

void Report::Say(std::string_view kind, std::string_view text, std::string_view file) {
    mTexts.emplace_back(text);
    mLines.push_back(std::format("kavra: {}: {}: {}\n", file.empty() ? std::string_view(mFile) : file, kind, text));
}

void Report::Fail(std::string_view text, std::string_view file) {
    mFailed = true;
    Say("error", text, file);
}

void Report::FailUnlessSaid(std::size_t mark, std::string_view text, std::string_view file) {
    mFailed = true;
    if (mTexts.size() == mark) Say("error", text, file);
}

std::vector<std::string> Report::Texts(std::size_t mark) const {
    return {mTexts.begin() + static_cast<std::ptrdiff_t>(mark), mTexts.end()};
}

std::string Report::LastText(std::string_view fallback) const {
    return mTexts.empty() ? std::string(fallback) : mTexts.back();
}

void Report::Print() const {
    WriteAll(stdout, out);
    std::fflush(stdout);
    for (const std::string& line : mLines)
        WriteAll(stderr, line);
}

MessageScope::MessageScope(Report& report, std::string file)
    : mReport(report), mFile(std::move(file)), mOuter(currentScope) {
    currentScope = this;
}

MessageScope::~MessageScope() {
    currentScope = mOuter;
}

MessageRouter::MessageRouter() {
    Objects::ObjModel::SetMessageSink(this);
}

MessageRouter::~MessageRouter() {
    Objects::ObjModel::SetMessageSink(nullptr);
}

void MessageRouter::Message(Objects::EMessageKind kind, const wchar_t* text, const wchar_t* detail) {
    const std::string_view kindText = kind == Objects::EMessageKind::kError ? "error" : "warning";
    std::string message = OS::ToUtf8(text);
    if (detail != nullptr) message += ": " + OS::ToUtf8(detail);
    if (currentScope != nullptr) {
        currentScope->mReport.Say(kindText, message, currentScope->mFile);
    } else {
        WriteAll(stderr, std::format("kavra: {}: {}\n", kindText, message));
    }
}

}  // namespace Kavra::App
