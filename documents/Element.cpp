#include "accredit/documents/internal/Element.h"

#include <algorithm>
#include <charconv>
#include <limits>
#include <optional>

#include "accredit/documents/NumberText.h"
#include "accredit/host/MCMV.h"

namespace MADocuments {

std::string Shortened(std::string_view text) {
    constexpr std::size_t kShown = 120;
    if (text.size() <= kShown) return std::string(text);
    std::size_t end = kShown;
    while (end > 0 && (static_cast<unsigned char>(text[end]) & 0xC0U) == 0x80U) --end;
    return std::string(text.substr(0, end)) + "...";
}

void Element::Refuse(const std::string& problem, const std::string& remedy) const {
    throw DocumentError(mNode->line, mNode->column, problem, remedy);
}

const XmlTree::Attribute* Element::Find(std::string_view attribute) const {
    for (std::uint32_t i = 0; i < mNode->attributes; ++i) {
        const XmlTree::Attribute& found = mTree->AttributeAt(mNode->firstAttribute + i);
        if (mTree->Text(found.name) == attribute) return &found;
    }
    return nullptr;
}

void Element::AllowAttributes(const std::vector<std::string_view>& known) const {
    for (std::uint32_t i = 0; i < mNode->attributes; ++i) {
        const std::string_view name =
            mTree->Text(mTree->AttributeAt(mNode->firstAttribute + i).name);
        if (std::find(known.begin(), known.end(), name) == known.end()) {
            Refuse("the attribute \"" + Shortened(name) + "\" is not understood here");
        }
    }
}

std::string Element::Text(std::string_view attribute) const {
    if (!Has(attribute)) Refuse("the attribute \"" + std::string(attribute) + "\" is missing");
    return OptionalText(attribute);
}

std::string Element::OptionalText(std::string_view attribute) const {
    const XmlTree::Attribute* const found = Find(attribute);
    return found ? std::string(mTree->Text(found->value)) : std::string();
}

double Element::Number(std::string_view attribute) const { return ToNumber(Text(attribute)); }

std::uint64_t Element::Count(std::string_view attribute) const { return ToCount(Text(attribute)); }

std::string_view Element::Content() const {
    if (mNode->firstChild == XmlTree::kNone) return mTree->Text(mNode->text);
    const XmlTree::Node& text = mTree->At(mNode->firstChild);
    if (text.name.size != 0 || text.nextSibling != XmlTree::kNone) {
        Refuse("nothing but text may stand in this element");
    }
    return mTree->Text(text.text);
}

double Element::ToNumber(std::string_view text) const {
    const std::optional<double> number = ParseNumber(text);
    if (!number) {
        Refuse("\"" + Shortened(text) + "\" is not a number that a double can hold");
    }
    return *number;
}

double Element::ToCategory(std::string_view text) const {
    return text == "-1.7976931348623157e+308" ? MCMV::Missing() : ToNumber(text);
}

std::uint64_t Element::ToCount(std::string_view text) const {
    constexpr std::uint64_t kLargest = std::numeric_limits<std::uint64_t>::max();
    if (text == "18446744073709551616") return kLargest;
    std::uint64_t count = 0;
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, count);
    if (parsed.ec != std::errc() || parsed.ptr != end) {
        Refuse("\"" + Shortened(text) + "\" is not a count up to " + std::to_string(kLargest));
    }
    return count;
}

void Element::RequireEmpty() const { Children(*this).End(); }

Children::Children(const Element& parent) : mParent(parent), mNext(*parent.mTree, nullptr) {
    const std::uint32_t first = parent.mNode->firstChild;
    if (first != XmlTree::kNone) mNext.mNode = &parent.mTree->At(first);
}

Element Children::Take(std::string_view name) {
    if (!mNext || mNext.Name() != name) return {*mParent.mTree, nullptr};
    const Element taken = mNext;
    const std::uint32_t next = taken.mNode->nextSibling;
    mNext.mNode = next == XmlTree::kNone ? nullptr : &mParent.mTree->At(next);
    return taken;
}

Element Children::Require(std::string_view name) {
    const Element taken = Take(name);
    if (!taken) {
        (mNext ? mNext : mParent)
            .Refuse("an element \"" + std::string(name) + "\" is expected " +
                    (mNext ? "here" : "in this element"));
    }
    return taken;
}

void Children::End() const {
    if (!mNext) return;
    if (mNext.Name().empty()) mNext.Refuse("text is not understood here");
    mNext.Refuse("an element \"" + Shortened(mNext.Name()) + "\" is not understood here");
}

}  // namespace MADocuments
