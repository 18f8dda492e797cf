#pragma once

#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

#include "accredit/host/AccreditExport.h"
#include "accredit/host/ExportFormat.h"

/// @file
/// An element of a document, with what it holds.

namespace MCXML_NAMESPACE {

/// A node of an XML tree, made on the heap by Create. It owns the children that it took.
///
/// Names, attribute values and texts are UTF-8. What XML 1.0 cannot hold, not even as a character
/// reference, is refused where it is set: bytes that are not UTF-8, surrogates, U+FFFE and U+FFFF,
/// and control characters other than tab, line feed and carriage return. So every tree can be
/// written, and what is read back is what was set.
///
/// Neither destruction nor writing recurses, so the depth of a tree has no limit. A tree is used by
/// one thread at a time, or written by several.
class ACCREDIT_EXPORT XMLElement {
public:
    /// A new element without attributes, text and children, owned by the caller. Null if `name` is
    /// not a name in XML.
    static XMLElement* Create(const std::string& name);

    /// Destroys the children as well.
    virtual ~XMLElement();

    XMLElement(const XMLElement&) = delete;
    XMLElement& operator=(const XMLElement&) = delete;

    /// The element's name.
    virtual std::string GetName() const;

    /// Writes the element with all that is in it as UTF-8, the texts and values exactly as they
    /// were set. `level` is the depth at which the element stands: 0 for the root of a document,
    /// before which the XML declaration is written. Uses no locale and no formatting state of the
    /// stream, and does not look at the stream's state. The stream gets the whole text at once, so
    /// that it gets none of it if memory runs out.
    virtual void WriteTo(std::ostream& out, const ExportFormat& format, int level) const;

    /// Appends a child behind those that are there and takes ownership of it. Gives the child's
    /// position, from 0. Refuses with -1, and takes nothing, a null pointer, an element that has a
    /// parent, and an element in whose tree this one stands.
    int AddElement(XMLElement* child) noexcept;

    /// Adds an attribute behind those that are there, or replaces the value of one. Gives false,
    /// and changes nothing, if the name is not a name in XML or the value cannot be held.
    bool SetAttribute(const std::string& name, const std::string& value);

    /// Sets the text, which stands before the children. Gives false, and changes nothing, if the
    /// text cannot be held.
    bool SetText(const std::string& text);

private:
    explicit XMLElement(const std::string& name);

    void AppendStartTo(std::string& buffer) const;
    void AppendEndTo(std::string& buffer) const;

    std::string mName;
    std::vector<std::pair<std::string, std::string>> mAttributes;
    std::string mText;
    // The children are chained through themselves, so that taking one needs no memory, and walking
    // or destroying a tree needs neither a stack nor recursion.
    XMLElement* mParent = nullptr;
    XMLElement* mFirstChild = nullptr;
    XMLElement* mLastChild = nullptr;
    XMLElement* mNextSibling = nullptr;
    int mChildCount = 0;
};

}  // namespace MCXML_NAMESPACE
