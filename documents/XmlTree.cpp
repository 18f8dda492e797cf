#include "accredit/documents/internal/XmlTree.h"

#include <expat.h>

#include <algorithm>
#include <exception>
#include <memory>
#include <new>
#include <type_traits>

#include "accredit/documents/DocumentError.h"
#include "accredit/documents/Reference.h"

namespace MADocuments {

namespace {

constexpr std::size_t kMaxDepth = 32;
constexpr std::size_t kMaxPieces = 16'000'000;
constexpr std::string_view kWhiteSpace = " \t\r\n";

constexpr const char* kOtherEncoding = "the encoding must be UTF-8";
constexpr const char* kConvert = "convert the document to UTF-8, and name that in its first line";
constexpr const char* kTakeOut = "take it out, a reference needs none";
constexpr const char* kGiveDocument = "this is no document: give the text of one, decompressed";
constexpr const char* kWriteAsText = "write its text with character references instead";
constexpr const char* kLeaveOut = "leave out variables that have many categories";

bool IsWhiteSpace(std::string_view text) {
    return text.find_first_not_of(kWhiteSpace) == std::string_view::npos;
}

bool IsUtf8(std::string_view encoding) {
    constexpr std::string_view kName = "utf-8";
    return std::equal(
        encoding.begin(), encoding.end(), kName.begin(), kName.end(), [](char given, char wanted) {
            return (given >= 'A' && given <= 'Z' ? given - 'A' + 'a' : given) == wanted;
        });
}

}  // namespace

// What the parser calls. No exception may pass through it, so the first one is kept, the parser is
// stopped, and Run throws it.
class XmlTree::Builder {
public:
    explicit Builder(XmlTree& tree)
        : mTree(tree), mParser(XML_ParserCreate("UTF-8"), &XML_ParserFree) {
        if (!mParser) throw std::bad_alloc();
        XML_Parser parser = mParser.get();
        XML_SetUserData(parser, this);
        XML_SetXmlDeclHandler(parser, &Declaration);
        XML_SetElementHandler(parser, &Start, &End);
        XML_SetCharacterDataHandler(parser, &Characters);
        XML_SetStartCdataSectionHandler(parser, &Cdata);
        XML_SetProcessingInstructionHandler(parser, &Instruction);
        XML_SetStartDoctypeDeclHandler(parser, &Doctype);
    }

    void Run(std::string_view document) {
        XML_Parser parser = mParser.get();
        const XML_Status status =
            XML_Parse(parser, document.data(), static_cast<int>(document.size()), XML_TRUE);
        if (mFailure) std::rethrow_exception(mFailure);
        if (status == XML_STATUS_OK) return;
        const XML_Error error = XML_GetErrorCode(parser);
        if (error == XML_ERROR_NO_MEMORY) throw std::bad_alloc();
        Refuse(error == XML_ERROR_INVALID_TOKEN
                   ? "not well-formed XML: a byte or character that cannot stand here"
                   : std::string("not well-formed XML: ") + XML_ErrorString(error),
               BeginsLikeDocument(document) ? kRestoreDocument : kGiveDocument);
    }

private:
    template <class Operation>
    static void Guard(void* self, Operation operation) {
        Builder& builder = *static_cast<Builder*>(self);
        if (builder.mFailure) return;
        try {
            operation(builder);
        } catch (...) {
            builder.mFailure = std::current_exception();
            XML_StopParser(builder.mParser.get(), XML_FALSE);
        }
    }

    static void Declaration(void* self, const char* version, const char* encoding,
                            int /*standalone*/) {
        Guard(self, [=](Builder& builder) {
            if (!version || std::string_view(version) != "1.0") {
                builder.Refuse("not a declaration of XML 1.0");
            }
            if (encoding && !IsUtf8(encoding)) builder.Refuse(kOtherEncoding, kConvert);
        });
    }

    static void Start(void* self, const char* name, const char** attributes) {
        Guard(self, [=](Builder& builder) { builder.StartElement(name, attributes); });
    }

    static void End(void* self, const char* /*name*/) {
        Guard(self, [](Builder& builder) { builder.EndElement(); });
    }

    static void Characters(void* self, const char* text, int length) {
        Guard(self, [=](Builder& builder) {
            builder.AddText({text, static_cast<std::size_t>(length)});
        });
    }

    static void Cdata(void* self) {
        Guard(self, [](Builder& builder) {
            builder.Refuse("CDATA sections are not understood", kWriteAsText);
        });
    }

    static void Instruction(void* self, const char* /*target*/, const char* /*data*/) {
        Guard(self, [](Builder& builder) {
            builder.Refuse("processing instructions are not understood", kTakeOut);
        });
    }

    static void Doctype(void* self, const char* /*name*/, const char* /*system*/,
                        const char* /*public*/, int /*internal*/) {
        Guard(self, [](Builder& builder) {
            builder.Refuse("document types are not understood", kTakeOut);
        });
    }

    std::uint32_t Line() const {
        return static_cast<std::uint32_t>(XML_GetCurrentLineNumber(mParser.get()));
    }
    std::uint32_t Column() const {
        return static_cast<std::uint32_t>(XML_GetCurrentColumnNumber(mParser.get())) + 1;
    }

    [[noreturn]] void Refuse(const std::string& problem,
                             const std::string& remedy = kRestoreDocument) const {
        throw DocumentError(Line(), Column(), problem, remedy);
    }

    void Count() {
        if (++mPieces > kMaxPieces) Refuse("the document has too many elements", kLeaveOut);
    }

    Span Keep(std::string_view text) {
        const Span span{static_cast<std::uint32_t>(mTree.mTexts.size()),
                        static_cast<std::uint32_t>(text.size())};
        mTree.mTexts += text;
        return span;
    }

    // Links a new node behind the last child of the open element.
    void Append(const Node& node) {
        const auto index = static_cast<std::uint32_t>(mTree.mNodes.size());
        mTree.mNodes.push_back(node);
        if (mOpen.empty()) return;
        Open& parent = mOpen.back();
        (parent.lastChild == kNone ? mTree.mNodes[parent.node].firstChild
                                   : mTree.mNodes[parent.lastChild].nextSibling) = index;
        parent.lastChild = index;
    }

    void StartElement(const char* name, const char** attributes) {
        EndText();
        Count();
        if (mOpen.size() == kMaxDepth) Refuse("elements are nested too deep");
        Node node;
        node.line = Line();
        node.column = Column();
        node.name = Keep(name);
        node.firstAttribute = static_cast<std::uint32_t>(mTree.mAttributes.size());
        for (; *attributes; attributes += 2) {
            Count();
            const Span attribute = Keep(attributes[0]);
            mTree.mAttributes.push_back({attribute, Keep(attributes[1])});
            ++node.attributes;
        }
        Append(node);
        mOpen.push_back({static_cast<std::uint32_t>(mTree.mNodes.size() - 1), kNone});
    }

    void EndElement() {
        const Open& open = mOpen.back();
        if (open.lastChild == kNone && IsWhiteSpace(mText)) {
            mTree.mNodes[open.node].text = Keep(mText);
        }
        EndText();
        mOpen.pop_back();
    }

    // The parser hands over a text piece by piece.
    void AddText(std::string_view text) {
        if (mText.empty()) {
            mTextLine = Line();
            mTextColumn = Column();
        }
        mText += text;
    }

    void EndText() {
        if (!IsWhiteSpace(mText)) {
            Count();
            Node node;
            node.line = mTextLine;
            node.column = mTextColumn;
            node.text = Keep(mText);
            Append(node);
        }
        mText.clear();
    }

    struct Open {
        std::uint32_t node;
        std::uint32_t lastChild;
    };

    XmlTree& mTree;
    std::unique_ptr<std::remove_pointer_t<XML_Parser>, decltype(&XML_ParserFree)> mParser;
    std::exception_ptr mFailure;
    std::vector<Open> mOpen;
    std::string mText;
    std::uint32_t mTextLine = 0;
    std::uint32_t mTextColumn = 0;
    std::size_t mPieces = 0;
};

XmlTree::XmlTree(std::string_view document) {
    if (document.size() > kMaxDocumentSize) {
        throw DocumentError(
            "a document of more than " + std::to_string(kMaxDocumentSize / 1'048'576) + " MiB",
            kLeaveOut);
    }
    // The parser would take the byte-order mark of UTF-16 for bytes that are no characters.
    if (document.substr(0, 2) == "\xFF\xFE" || document.substr(0, 2) == "\xFE\xFF") {
        throw DocumentError(1, 1, kOtherEncoding, kConvert);
    }
    Builder(*this).Run(document);
}

}  // namespace MADocuments
