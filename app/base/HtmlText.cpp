#include "app/base/HtmlText.h"

#include "app/base/Characters.h"

namespace app {

std::string HtmlText(std::string_view text) {
    const bool hasRightToLeft = HasRightToLeft(text);
    std::string html;
    for (const char byte : text) {
        switch (byte) {
            case '&':
                html += "&amp;";
                break;
            case '<':
                html += "&lt;";
                break;
            case '>':
                html += "&gt;";
                break;
            case '"':
                html += hasRightToLeft ? "\"&lrm;" : "\"";
                break;
            default:
                html += byte;
        }
    }
    return html;
}

}  // namespace app
