#include "accredit/documents/SourceText.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>
#include <utility>

#include "app/base/Errors.h"
#include "app/base/Printable.h"

namespace app {

SourceText::SourceText(std::string name, std::string text)
    : mName(std::move(name)), mText(std::move(text)) {}

void SourceText::Refuse(std::size_t offset, const std::string& problem) const {
    const auto before = std::string_view(mText).substr(0, std::min(offset, mText.size()));
    const auto line = 1 + std::count(before.begin(), before.end(), '\n');
    const std::size_t lineStart = before.rfind('\n') + 1;  // 0 if there is no line end
    const std::size_t column = 1 + CountCodePoints(before.substr(lineStart));
    throw InputError(fmt::format("{}:{}:{}: {}", mName, line, column, problem));
}

}  // namespace app
