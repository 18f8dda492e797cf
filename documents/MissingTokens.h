#pragma once

#include <array>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace MADocuments {

/// The texts that stand for a missing datum: the empty text, `NA`, and those that the user names.
/// Blanks around a token do not count.
class MissingTokens {
public:
    explicit MissingTokens(const std::vector<std::string>& named = {});

    /// All tokens, each once: the empty text, `NA`, and those that the user named, in that order.
    std::vector<std::string> Texts() const;

    /// Whether `text`, which has no blanks around it, is one of the tokens.
    bool Contains(std::string_view text) const {
        return text.empty() ||
               (mFirstBytes[static_cast<unsigned char>(text.front())] && IsToken(text));
    }

private:
    void Add(std::string_view token);
    bool IsToken(std::string_view text) const { return mTokens.find(text) != mTokens.end(); }

    std::set<std::string, std::less<>> mTokens;
    std::vector<std::string> mInOrder;
    std::array<bool, 256> mFirstBytes{};
};

}  // namespace MADocuments
