#pragma once

#include <array>
#include <cstddef>
#include <functional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "accredit/host/AccreditExport.h"

/// @file
/// The texts that stand for a missing datum.

namespace MADocuments {

/// The texts that stand for a missing datum: the empty text, and usually some spellings that
/// programs write and others that the user names. Blanks around a token do not count.
class MissingTokens {
public:
    /// The empty text, the usual spellings, and `named`. The usual ones are `NA`, `NaN`, `nan`,
    /// `NULL`, `null`, `N/A`, `n/a`, `#N/A` and `<NA>`.
    ACCREDIT_EXPORT explicit MissingTokens(const std::vector<std::string>& named = {});

    /// The empty text and `named`.
    ACCREDIT_EXPORT static MissingTokens Only(const std::vector<std::string>& named);

    /// All tokens, each once: the empty text, the usual ones, and those that the user named, in
    /// that order.
    ACCREDIT_EXPORT std::vector<std::string> Texts() const;

    /// Whether `text`, which has no blanks around it, is one of the tokens.
    bool Contains(std::string_view text) const {
        return text.empty() || (mFirstBytes[static_cast<unsigned char>(text.front())] &&
                                text.size() <= mLongest && IsToken(text));
    }

private:
    enum class None {};
    explicit MissingTokens(None /*none*/) {}

    void Add(std::string_view token);
    bool IsToken(std::string_view text) const { return mTokens.find(text) != mTokens.end(); }

    std::set<std::string, std::less<>> mTokens;
    std::vector<std::string> mInOrder;
    std::array<bool, 256> mFirstBytes{};
    std::size_t mLongest = 0;
};

}  // namespace MADocuments
