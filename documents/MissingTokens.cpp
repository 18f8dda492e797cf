#include "accredit/documents/MissingTokens.h"

#include <algorithm>

#include "accredit/documents/NumberText.h"

namespace MADocuments {

namespace {

constexpr std::array<const char*, 9> kUsual = {"NA",  "NaN", "nan",  "NULL", "null",
                                               "N/A", "n/a", "#N/A", "<NA>"};

}  // namespace

MissingTokens::MissingTokens(const std::vector<std::string>& named) {
    for (const char* token : kUsual) Add(token);
    for (const std::string& token : named) Add(TrimBlanks(token));
}

MissingTokens MissingTokens::Only(const std::vector<std::string>& named) {
    MissingTokens tokens(None{});
    for (const std::string& token : named) tokens.Add(TrimBlanks(token));
    return tokens;
}

void MissingTokens::Add(std::string_view token) {
    if (token.empty() || !mTokens.emplace(token).second) return;
    mInOrder.emplace_back(token);
    mFirstBytes[static_cast<unsigned char>(token.front())] = true;
    mLongest = std::max(mLongest, token.size());
}

std::vector<std::string> MissingTokens::Texts() const {
    std::vector<std::string> texts{""};
    texts.insert(texts.end(), mInOrder.begin(), mInOrder.end());
    return texts;
}

}  // namespace MADocuments
