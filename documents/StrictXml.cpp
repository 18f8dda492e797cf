#include "accredit/documents/StrictXml.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <optional>

#include "accredit/documents/NumberText.h"
#include "app/base/Printable.h"

using pugi::xml_attribute;
using pugi::xml_node;

namespace app {

namespace {

constexpr std::uint64_t kMaxCount = std::uint64_t{1} << 53U;

}  // namespace

void Element::Refuse(const std::string& problem) const {
    const std::ptrdiff_t offset = mNode.offset_debug();
    mSource->Refuse(offset < 0 ? 0 : static_cast<std::size_t>(offset), problem);
}

void Element::AllowAttributes(std::initializer_list<std::string_view> known) const {
    for (const xml_attribute attribute : mNode.attributes()) {
        const char* const name = attribute.name();
        if (std::find(known.begin(), known.end(), std::string_view(name)) == known.end()) {
            Refuse(fmt::format("the attribute \"{}\" is not understood here", Printable(name)));
        }
        // The first of this name is another one.
        if (mNode.attribute(name) != attribute) Refuse(fmt::format("two attributes \"{}\"", name));
    }
}

std::string Element::Text(const char* attribute) const {
    if (!Has(attribute)) Refuse(fmt::format("the attribute \"{}\" is missing", attribute));
    return OptionalText(attribute);
}

std::string Element::OptionalText(const char* attribute) const {
    return mNode.attribute(attribute).value();
}

double Element::Number(const char* attribute) const { return ToNumber(Text(attribute)); }

std::uint64_t Element::Count(const char* attribute) const { return ToCount(Text(attribute)); }

std::string Element::Content() const {
    const xml_node text = mNode.first_child();
    if (text && (text.type() != pugi::node_pcdata || text.next_sibling())) {
        Refuse("nothing but text may stand in this element");
    }
    return text.value();
}

double Element::ToNumber(std::string_view text) const {
    const std::optional<double> number = ParseNumber(text);
    if (!number) Refuse(NotANumber(text));
    return *number;
}

std::uint64_t Element::ToCount(std::string_view text) const {
    std::uint64_t count = 0;
    const char* const end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data(), end, count);
    if (parsed.ec != std::errc() || parsed.ptr != end || count > kMaxCount) {
        Refuse(fmt::format("\"{}\" is not a count up to {}", Printable(text.substr(0, 40)),
                           kMaxCount));
    }
    return count;
}

void Element::RequireEmpty() const { Children(*this).End(); }

Children::Children(const Element& parent) : mParent(parent), mNext(parent.Node().first_child()) {}

Element Children::Take(const char* name) {
    if (std::string_view(mNext.name()) != name) return {mParent.Source(), xml_node()};
    const Element taken(mParent.Source(), mNext);
    mNext = mNext.next_sibling();
    return taken;
}

Element Children::Require(const char* name) {
    const Element taken = Take(name);
    if (!taken) {
        const Element here = mNext ? Element(mParent.Source(), mNext) : mParent;
        here.Refuse(fmt::format("an element \"{}\" is expected {}", name,
                                mNext ? "here" : "in this element"));
    }
    return taken;
}

void Children::End() const {
    if (!mNext) return;
    const Element left(mParent.Source(), mNext);
    if (mNext.type() != pugi::node_element) left.Refuse("text is not understood here");
    left.Refuse(fmt::format("an element \"{}\" is not understood here", Printable(mNext.name())));
}

}  // namespace app
