#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "accredit/documents/DocumentError.h"
#include "accredit/documents/internal/XmlTree.h"

namespace MADocuments {

/// A text of a document as an error message shows it: no longer than a person reads.
std::string Shortened(std::string_view text);

/// One element of a document, or none. Whatever is not as it should be is refused with
/// DocumentError and the element's place.
class Element {
public:
    /// The tree must outlive the element.
    Element(const XmlTree& tree, const XmlTree::Node* node) : mTree(&tree), mNode(node) {}

    /// Whether there is an element.
    explicit operator bool() const { return mNode != nullptr; }

    std::string_view Name() const { return mTree->Text(mNode->name); }

    [[noreturn]] void Refuse(const std::string& problem,
                             const std::string& remedy = kRestoreDocument) const;

    /// Refuses attributes that are not among the known ones.
    void AllowAttributes(const std::vector<std::string_view>& known) const;

    bool Has(std::string_view attribute) const { return Find(attribute) != nullptr; }

    /// The value of an attribute, which must be there.
    std::string Text(std::string_view attribute) const;

    /// The same, or an empty text if the attribute is not there.
    std::string OptionalText(std::string_view attribute) const;

    /// The value of an attribute that is a decimal number.
    double Number(std::string_view attribute) const;

    /// The value of an attribute that is a count.
    std::uint64_t Count(std::string_view attribute) const;

    /// The text inside an element that holds nothing else.
    std::string_view Content() const;

    /// What a text inside this element spells: a decimal number, or a whole number from 0 up to the
    /// largest that 64 bits hold; the next one, which the largest becomes as a double, counts as
    /// it.
    double ToNumber(std::string_view text) const;
    std::uint64_t ToCount(std::string_view text) const;

    /// The number that is a category: also the missing value, as an exporter spells it.
    double ToCategory(std::string_view text) const;

    /// Refuses whatever stands inside.
    void RequireEmpty() const;

private:
    friend class Children;

    const XmlTree::Attribute* Find(std::string_view attribute) const;

    const XmlTree* mTree;
    const XmlTree::Node* mNode;
};

/// The children of an element, taken one after the other.
class Children {
public:
    explicit Children(const Element& parent);

    /// The next child if it has this name, else none.
    Element Take(std::string_view name);

    /// The next child, which must have this name.
    Element Require(std::string_view name);

    /// Refuses what has not been taken.
    void End() const;

private:
    Element mParent;
    Element mNext;
};

}  // namespace MADocuments
