#pragma once

#include <string>

#include "fakes/Tables.h"

namespace fakes {

/// A text in which each @3(x#,) is replaced by x1,x2,x3, - that is, by what stands in the
/// parentheses as often as the number says, with the count in place of every #.
inline std::string Repeated(const std::string& text) {
    std::string all;
    std::size_t at = 0;
    for (std::size_t sign; (sign = text.find('@', at)) != std::string::npos;) {
        const std::size_t open = text.find('(', sign);
        const std::size_t close = text.find(')', sign);
        if (open > close || close == std::string::npos) Refuse(text, "has an @ without (...)");
        all += text.substr(at, sign - at);
        const std::string piece = text.substr(open + 1, close - open - 1);
        const double times = ToNumber(text.substr(sign + 1, open - sign - 1));
        if (piece.size() == 1) all.append(static_cast<std::size_t>(times), piece[0]);
        for (int i = 1; piece.size() > 1 && i <= times; ++i) {
            for (const char byte : piece) {
                all += byte == '#' ? std::to_string(i) : std::string(1, byte);
            }
        }
        at = close + 1;
    }
    return all + text.substr(at);
}

}  // namespace fakes
