#include "app/base/JsonWriter.h"

#include <fmt/format.h>

#include <cmath>

#include "app/base/JsonText.h"

namespace app {

void JsonWriter::Key(std::string_view name) {
    BeginValue();
    mText += JsonText(name) + ": ";
    mAfterKey = true;
}

void JsonWriter::String(std::string_view text) {
    BeginValue();
    mText += JsonText(text);
}

void JsonWriter::Number(int number) {
    BeginValue();
    mText += fmt::format("{}", number);
}

void JsonWriter::Number(std::uint64_t number) {
    BeginValue();
    mText += fmt::format("{}", number);
}

void JsonWriter::Number(double number) {
    if (!std::isfinite(number)) return Null();
    BeginValue();
    const std::string digits = fmt::format("{}", number);
    mText += digits;
    if (digits.find_first_of(".e") == std::string::npos) mText += ".0";
}

void JsonWriter::Number(const std::optional<double>& number) {
    if (!number) return Null();
    Number(*number);
}

void JsonWriter::Null() {
    BeginValue();
    mText += "null";
}

void JsonWriter::Begin(char bracket) {
    BeginValue();
    mText += bracket;
    ++mLevel;
    mIsEmpty = true;
}

void JsonWriter::End(char bracket) {
    --mLevel;
    if (!mIsEmpty) BreakLine();
    mText += bracket;
    mIsEmpty = false;
}

// What has to stand between this value or key and what was written before.
void JsonWriter::BeginValue() {
    if (!mAfterKey && mLevel > 0) {
        if (!mIsEmpty) mText += ',';
        BreakLine();
        mIsEmpty = false;
    }
    mAfterKey = false;
}

void JsonWriter::BreakLine() {
    mText += '\n';
    mText.append(2 * mLevel, ' ');
}

}  // namespace app
