#pragma once

#include <cstdint>
#include <initializer_list>
#include <pugixml.hpp>
#include <string>
#include <string_view>

#include "accredit/documents/SourceText.h"

namespace app {

/// One element of a parsed document that was scanned before. Whatever is not as it should be is
/// refused with InputError and the element's place.
class Element {
public:
    /// The source must outlive the element.
    Element(const SourceText& source, pugi::xml_node node) : mSource(&source), mNode(node) {}

    /// Whether there is an element.
    explicit operator bool() const { return !mNode.empty(); }

    pugi::xml_node Node() const { return mNode; }
    const SourceText& Source() const { return *mSource; }

    [[noreturn]] void Refuse(const std::string& problem) const;

    /// Refuses attributes that are not among the known ones, and one that stands twice.
    void AllowAttributes(std::initializer_list<std::string_view> known) const;

    bool Has(const char* attribute) const { return !mNode.attribute(attribute).empty(); }

    /// The value of an attribute, which must be there.
    std::string Text(const char* attribute) const;

    /// The same, or an empty text if the attribute is not there.
    std::string OptionalText(const char* attribute) const;

    /// The value of an attribute that is a decimal number.
    double Number(const char* attribute) const;

    /// The value of an attribute that is a count.
    std::uint64_t Count(const char* attribute) const;

    /// The text inside an element that holds nothing else.
    std::string Content() const;

    /// What a text inside this element spells: a decimal number, or a whole number from 0 up to
    /// 2 to the 53rd, above which not every one is a double.
    double ToNumber(std::string_view text) const;
    std::uint64_t ToCount(std::string_view text) const;

    /// Refuses whatever stands inside.
    void RequireEmpty() const;

private:
    const SourceText* mSource;
    pugi::xml_node mNode;
};

/// The children of an element, taken one after the other.
class Children {
public:
    explicit Children(const Element& parent);

    /// The next child if it has this name, else none.
    Element Take(const char* name);

    /// The next child, which must have this name.
    Element Require(const char* name);

    /// Refuses what has not been taken.
    void End() const;

private:
    Element mParent;
    pugi::xml_node mNext;
};

}  // namespace app
