#include "accredit/host/internal/PMMLValues.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

#include "accredit/host/MCPMMLExporter.h"
#include "accredit/host/internal/XMLText.h"

using MCMTD_NAMESPACE::IMCEncoder;

namespace MCDetail {

namespace {

std::optional<std::string> CategoryText(const IMCEncoder& encoder, int code) {
    if (encoder.GetValueType() == IMCEncoder::ValueTypeNumber) {
        const double number = encoder.DecodeNumber(code);
        if (!std::isfinite(number)) return std::nullopt;
        return FormatNumber(number);
    }
    std::string text = encoder.DecodeString(code);
    if (!IsXMLText(text)) return std::nullopt;
    return text;
}

// The first code whose text is also a missing value or that of a lower code, or -1.
int FirstRepeated(const std::vector<std::string>& texts,
                  const std::vector<std::string>& missingValues) {
    constexpr int kNoCode = -1;
    std::vector<std::pair<std::string_view, int>> sorted;
    sorted.reserve(texts.size() + missingValues.size());
    for (const std::string& text : missingValues) sorted.emplace_back(text, kNoCode);
    int code = 0;
    for (const std::string& text : texts) sorted.emplace_back(text, code++);
    std::sort(sorted.begin(), sorted.end());

    int first = kNoCode;
    for (std::size_t i = 1; i < sorted.size(); ++i) {
        const auto& [text, later] = sorted[i];
        if (later == kNoCode || text != sorted[i - 1].first) continue;
        first = first == kNoCode ? later : std::min(first, later);
    }
    return first;
}

// 0 and -0 are two texts and one number. The code of the second of them, or -1.
int SecondZero(const std::vector<std::string>& texts) {
    const auto zero = std::find(texts.begin(), texts.end(), "0");
    const auto negative = std::find(texts.begin(), texts.end(), "-0");
    if (zero == texts.end() || negative == texts.end()) return -1;
    return static_cast<int>(std::max(zero, negative) - texts.begin());
}

}  // namespace

FieldValues ReadFieldValues(const IMCEncoder& encoder,
                            const std::vector<std::string>& missingValues) {
    const int count = encoder.GetNumCategories();
    FieldValues values;
    for (int code = 0; code < count; ++code) {
        std::optional<std::string> text = CategoryText(encoder, code);
        if (!text) {
            values.unheld = code;
            return values;
        }
        values.texts.push_back(std::move(*text));
    }
    values.repeated = FirstRepeated(values.texts, missingValues);
    if (encoder.GetValueType() == IMCEncoder::ValueTypeNumber) {
        const int zero = SecondZero(values.texts);
        if (zero >= 0 && (values.repeated < 0 || zero < values.repeated)) values.repeated = zero;
    }
    return values;
}

bool CountFieldValues(const IMCEncoder& encoder, int& count) {
    const int more = std::max(encoder.GetNumCategories(), 0);
    if (more > MCPMMLExporter::kMaxCategories - count) return false;
    count += more;
    return true;
}

}  // namespace MCDetail
