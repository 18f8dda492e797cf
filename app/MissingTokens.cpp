#include "app/MissingTokens.h"

#include <algorithm>

#include "app/NumberText.h"

namespace app {

MissingTokens::MissingTokens(const std::vector<std::string>& named) : mTokens{"NA"} {
    for (const std::string& token : named) {
        const std::string_view text = TrimBlanks(token);
        if (!text.empty() && !IsToken(text)) mTokens.emplace_back(text);
    }
    for (const std::string& token : mTokens) {
        mFirstBytes[static_cast<unsigned char>(token.front())] = true;
    }
}

std::vector<std::string> MissingTokens::Texts() const {
    std::vector<std::string> texts{""};
    texts.insert(texts.end(), mTokens.begin(), mTokens.end());
    return texts;
}

bool MissingTokens::IsToken(std::string_view text) const {
    return std::find(mTokens.begin(), mTokens.end(), text) != mTokens.end();
}

}  // namespace app
