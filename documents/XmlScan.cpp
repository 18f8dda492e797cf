#include "accredit/documents/XmlScan.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <memory>

#include "accredit/host/XMLElement.h"

using MCXML_NAMESPACE::XMLElement;

namespace app {

namespace {

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";
constexpr std::string_view kWhiteSpace = " \t\r\n";
constexpr int kMaxDepth = 32;
constexpr std::size_t kMaxPieces = 16'000'000;

bool BeginsWith(std::string_view text, std::string_view beginning) {
    return text.substr(0, beginning.size()) == beginning;
}

bool IsContinuation(char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U; }

// XML 1.0, production 2.
bool IsXmlCharacter(std::uint32_t c) {
    return c == '\t' || c == '\n' || c == '\r' || (c >= 0x20 && c <= 0xD7FF) ||
           (c >= 0xE000 && c <= 0xFFFD) || (c >= 0x10000 && c <= 0x10FFFF);
}

// `name` is what stands between & and the semicolon.
bool IsReference(std::string_view name) {
    if (!BeginsWith(name, "#")) {
        constexpr std::array<std::string_view, 5> kEntities = {"amp", "lt", "gt", "quot", "apos"};
        return std::find(kEntities.begin(), kEntities.end(), name) != kEntities.end();
    }
    const bool hexadecimal = BeginsWith(name, "#x");
    name.remove_prefix(hexadecimal ? 2 : 1);
    std::uint32_t character = 0;
    const char* const end = name.data() + name.size();
    const auto parsed = std::from_chars(name.data(), end, character, hexadecimal ? 16 : 10);
    return parsed.ec == std::errc() && parsed.ptr == end && IsXmlCharacter(character);
}

class Scanner {
public:
    explicit Scanner(const SourceText& source) : mSource(source), mDocument(source.Text()) {}

    void Run() {
        if (BeginsLikeUtf16(mDocument)) mSource.Refuse(0, "the encoding must be UTF-8");
        if (const std::size_t nul = mDocument.find('\0'); nul != std::string_view::npos) {
            mSource.Refuse(nul, "a NUL byte, this is not a text file");
        }
        CheckCharacters();
        if (BeginsWith(mDocument, kByteOrderMark)) mAt = kByteOrderMark.size();
        while (mAt < mDocument.size()) {
            if (mDocument[mAt] == '<') {
                SkipMarkup();
            } else {
                SkipText();
            }
        }
    }

private:
    std::string_view Rest() const { return mDocument.substr(mAt); }

    void CheckCharacters() const {
        for (std::size_t at = 0; at < mDocument.size();) {
            const auto byte = static_cast<unsigned char>(mDocument[at]);
            std::size_t end = at + 1;
            if (byte < 0x20 || byte >= 0x80) {
                while (end < mDocument.size() && IsContinuation(mDocument[end])) ++end;
                if (!IsXmlText(std::string(mDocument.substr(at, end - at)))) {
                    mSource.Refuse(at, "a byte that is not UTF-8 or not allowed in XML");
                }
            }
            at = end;
        }
    }

    void Count() {
        if (++mPieces > kMaxPieces) mSource.Refuse(mAt, "the document has too many elements");
    }

    void SkipMarkup() {
        if (BeginsWith(Rest(), "<?")) {
            SkipDeclaration();
        } else if (BeginsWith(Rest(), "<!--")) {
            SkipComment();
        } else if (BeginsWith(Rest(), "<!")) {
            mSource.Refuse(mAt, "document types and CDATA sections are not understood");
        } else if (BeginsWith(Rest(), "</")) {
            SkipPast(">", "the end tag that begins here does not end");
            --mDepth;
        } else {
            SkipStartTag();
        }
    }

    // What is in it, the parser tells, which takes other ends than this one for its end as well.
    void SkipDeclaration() {
        constexpr std::string_view kDeclaration = "<?xml";
        const bool first = mAt == 0 || mDocument.substr(0, mAt) == kByteOrderMark;
        if (!first || !BeginsWith(Rest(), kDeclaration) ||
            Rest().substr(kDeclaration.size()).find_first_of(kWhiteSpace) != 0) {
            mSource.Refuse(mAt, "processing instructions are not understood");
        }
        const std::size_t begin = mAt + kDeclaration.size();
        SkipPast("?>", "the declaration that begins here does not end");
        const std::string_view content = mDocument.substr(begin, mAt - 2 - begin);
        const std::size_t foreign = content.find_first_of("<>/?");
        if (foreign != std::string_view::npos) {
            mSource.Refuse(begin + foreign, "this cannot stand in a declaration");
        }
    }

    void SkipComment() {
        constexpr std::size_t kStart = 4;  // the length of <!--
        const std::size_t begin = mAt + kStart;
        const std::size_t end = mDocument.find("--", begin);
        if (end == std::string_view::npos) {
            mSource.Refuse(mAt, "the comment that begins here does not end");
        }
        if (!BeginsWith(mDocument.substr(end), "-->")) mSource.Refuse(end, "-- inside a comment");
        mAt = end + 3;
    }

    void SkipPast(std::string_view end, const char* problem) {
        const std::size_t found = mDocument.find(end, mAt);
        if (found == std::string_view::npos) mSource.Refuse(mAt, problem);
        mAt = found + end.size();
    }

    void SkipText() {
        const std::size_t end = std::min(mDocument.find('<', mAt), mDocument.size());
        const std::string_view text = mDocument.substr(mAt, end - mAt);
        const std::size_t first = text.find_first_not_of(kWhiteSpace);
        if (first != std::string_view::npos) {
            if (mDepth <= 0) mSource.Refuse(mAt + first, "text outside the root");
            Count();
        }
        if (const std::size_t close = text.find("]]>"); close != std::string_view::npos) {
            mSource.Refuse(mAt + close, "]]> inside a text");
        }
        CheckReferences(text);
        mAt = end;
    }

    void SkipStartTag() {
        Count();
        if (++mDepth > kMaxDepth) mSource.Refuse(mAt, "elements are nested too deep");
        const std::size_t begin = mAt;
        while (true) {
            mAt = std::min(mDocument.find_first_of("<>\"'", mAt + 1), mDocument.size());
            if (mAt == mDocument.size())
                mSource.Refuse(begin, "the tag that begins here does not end");
            if (mDocument[mAt] == '<') mSource.Refuse(mAt, "a tag inside a tag");
            if (mDocument[mAt] == '>') break;
            const std::size_t quote = mDocument.find(mDocument[mAt], mAt + 1);
            if (quote == std::string_view::npos) mSource.Refuse(mAt, "the quote is not closed");
            Count();
            ++mAt;
            const std::string_view value = mDocument.substr(mAt, quote - mAt);
            if (const std::size_t tag = value.find('<'); tag != std::string_view::npos) {
                mSource.Refuse(mAt + tag, "a tag inside an attribute");
            }
            CheckReferences(value);
            mAt = quote;
        }
        if (mDocument[mAt - 1] == '/') --mDepth;
        ++mAt;
    }

    // `text` begins at mAt.
    void CheckReferences(std::string_view text) const {
        constexpr std::size_t kLongest = 12;
        for (std::size_t at = text.find('&'); at != std::string_view::npos;
             at = text.find('&', at + 1)) {
            const std::size_t length = text.substr(at, kLongest).find(';');
            if (length == std::string_view::npos || !IsReference(text.substr(at + 1, length - 1))) {
                mSource.Refuse(mAt + at,
                               "a reference to no character and to none of XML's entities");
            }
        }
    }

    const SourceText& mSource;
    std::string_view mDocument;
    std::size_t mAt = 0;
    int mDepth = 0;
    std::size_t mPieces = 0;  // elements, attributes and texts
};

}  // namespace

bool IsXmlText(const std::string& text) {
    static const std::unique_ptr<XMLElement> probe(XMLElement::Create("probe"));
    return probe->SetText(text);
}

void ScanXml(const SourceText& document) { Scanner(document).Run(); }

bool BeginsLikeXml(std::string_view beginning) {
    if (BeginsWith(beginning, kByteOrderMark)) beginning.remove_prefix(kByteOrderMark.size());
    beginning.remove_prefix(std::min(beginning.find_first_not_of(kWhiteSpace), beginning.size()));
    if (beginning.empty()) return false;
    struct Start {
        std::string_view text;
        std::string_view next;  // one of these bytes follows, any if there are none
    };
    constexpr std::array<Start, 4> kStarts = {
        {{"<?xml", kWhiteSpace}, {"<!--", ""}, {"<!DOCTYPE", ""}, {"<PMML", " \t\r\n>/"}}};
    return std::any_of(kStarts.begin(), kStarts.end(), [beginning](const Start& start) {
        const std::size_t length = std::min(start.text.size(), beginning.size());
        if (beginning.substr(0, length) != start.text.substr(0, length)) return false;
        return beginning.size() == length || start.next.empty() ||
               start.next.find(beginning[length]) != std::string_view::npos;
    });
}

bool BeginsLikeUtf16(std::string_view beginning) {
    return BeginsWith(beginning, "\xFF\xFE") || BeginsWith(beginning, "\xFE\xFF");
}

}  // namespace app
