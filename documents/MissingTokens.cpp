#include "accredit/documents/MissingTokens.h"

#include "accredit/documents/NumberText.h"

namespace MADocuments {

MissingTokens::MissingTokens(const std::vector<std::string>& named) {
    Add("NA");
    for (const std::string& token : named) Add(TrimBlanks(token));
}

void MissingTokens::Add(std::string_view token) {
    if (token.empty() || !mTokens.emplace(token).second) return;
    mInOrder.emplace_back(token);
    mFirstBytes[static_cast<unsigned char>(token.front())] = true;
}

std::vector<std::string> MissingTokens::Texts() const {
    std::vector<std::string> texts{""};
    texts.insert(texts.end(), mInOrder.begin(), mInOrder.end());
    return texts;
}

}  // namespace MADocuments
