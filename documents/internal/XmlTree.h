#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace MADocuments {

/// An XML document as a tree of elements and texts. Texts of nothing but white space are left out
/// beside other content, and so are comments. All names, values and texts stand in one string, and
/// a node is a few numbers, so that the tree of any document takes a small multiple of its length.
class XmlTree {
public:
    /// Stands for no node.
    static constexpr std::uint32_t kNone = 0xFFFFFFFF;

    struct Span {
        std::uint32_t begin = 0;
        std::uint32_t size = 0;
    };

    struct Attribute {
        Span name;
        Span value;
    };

    /// An element, or a text, which has no name. An element's own text is white space that is all
    /// it holds.
    struct Node {
        Span name;
        Span text;
        std::uint32_t firstChild = kNone;
        std::uint32_t nextSibling = kNone;
        std::uint32_t firstAttribute = 0;
        std::uint32_t attributes = 0;
        std::uint32_t line = 0;
        std::uint32_t column = 0;
    };

    /// Reads a document in UTF-8. Throws DocumentError for one that is not well formed, is longer
    /// than kMaxDocumentSize, has a document type, a CDATA section or a processing instruction, is
    /// nested more than 32 deep or has more than 16 million elements, attributes and texts.
    explicit XmlTree(std::string_view document);

    /// The root, which is an element.
    const Node& Root() const { return mNodes.front(); }

    const Node& At(std::uint32_t node) const { return mNodes[node]; }
    const Attribute& AttributeAt(std::uint32_t attribute) const { return mAttributes[attribute]; }
    std::string_view Text(Span span) const {
        return std::string_view(mTexts).substr(span.begin, span.size);
    }

private:
    class Builder;

    std::vector<Node> mNodes;
    std::vector<Attribute> mAttributes;
    std::string mTexts;
};

}  // namespace MADocuments
