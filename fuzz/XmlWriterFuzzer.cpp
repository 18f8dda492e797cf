// A tree of any names, attributes and texts: what XML cannot hold is refused, and the document of
// the rest is well formed and holds exactly what was set.

#include <algorithm>
#include <memory>
#include <pugixml.hpp>
#include <sstream>

#include "Fuzzing.h"
#include "WellFormed.h"
#include "accredit/host/XMLElement.h"

using fuzz::Input;
using fuzz::Require;
using MCXML_NAMESPACE::ExportFormat;
using MCXML_NAMESPACE::XMLElement;

namespace {

// The parsers are recursive, the writer is not.
constexpr int kMaxDepth = 100;

struct Node {
    explicit Node(std::string n) : name(std::move(n)) {}

    std::string name;
    std::string text;
    std::vector<std::pair<std::string, std::string>> attributes;
    std::vector<std::unique_ptr<Node>> children;
};

// Whether an own tree with nothing else in it is well formed: what the element accepts, XML must
// hold, and what XML holds, the element must accept. `text` goes in as references, where it can.
std::string Literal(const std::string& text) {
    std::string literal;
    for (const char c : text) {
        if (c == '&' || c == '<' || c == '>' || c == '\t' || c == '\n' || c == '\r') {
            literal += "&#" + std::to_string(static_cast<int>(c)) + ";";
        } else {
            literal += c;
        }
    }
    return literal;
}

bool IsText(const std::string& text) { return fuzz::IsWellFormed("<a>" + Literal(text) + "</a>"); }

bool IsName(const std::string& name) {
    return name.find_first_of(" \t\r\n<>/=&\"'") == std::string::npos &&
           fuzz::IsWellFormed("<" + name + "/>");
}

void Grow(Input& input, XMLElement& element, Node& node, int depth) {
    while (!input.Empty()) {
        switch (input.Below(4)) {
            case 0:
                return;
            case 1: {
                const std::string text = input.Text();
                Require(element.SetText(text) == IsText(text), "a text that XML holds is taken");
                if (IsText(text)) node.text = text;
                break;
            }
            case 2: {
                const std::string name = input.Text();
                const std::string value = input.Text();
                const bool good = IsName(name) && IsText(value);
                Require(element.SetAttribute(name, value) == good,
                        "an attribute that XML holds is taken");
                if (!good) break;
                const auto found =
                    std::find_if(node.attributes.begin(), node.attributes.end(),
                                 [&](const auto& attribute) { return attribute.first == name; });
                if (found == node.attributes.end()) {
                    node.attributes.emplace_back(name, value);
                } else {
                    found->second = value;
                }
                break;
            }
            default: {
                const std::string name = input.Text();
                XMLElement* const child = XMLElement::Create(name);
                Require((child != nullptr) == IsName(name), "a name of XML makes an element");
                if (!child) break;
                Require(element.AddElement(child) == static_cast<int>(node.children.size()),
                        "a child gets its position");
                Require(element.AddElement(child) == -1, "a child is taken once");
                Require(child->AddElement(&element) == -1, "no element stands in itself");
                node.children.push_back(std::make_unique<Node>(name));
                if (depth < kMaxDepth) Grow(input, *child, *node.children.back(), depth + 1);
            }
        }
    }
}

void Compare(const Node& node, pugi::xml_node parsed) {
    Require(parsed.name() == node.name, "the name is kept");
    auto attribute = parsed.attributes_begin();
    for (const auto& [name, value] : node.attributes) {
        Require(attribute != parsed.attributes_end() && attribute->name() == name &&
                    attribute->value() == value,
                "the attributes are kept");
        ++attribute;
    }
    Require(attribute == parsed.attributes_end(), "there are no more attributes");

    std::string text;
    auto child = node.children.begin();
    for (const pugi::xml_node inner : parsed.children()) {
        if (inner.type() == pugi::node_pcdata) {
            text += inner.value();
            continue;
        }
        Require(child != node.children.end(), "there are no more children");
        Compare(**child++, inner);
    }
    Require(child == node.children.end(), "the children are kept");
    const bool onlyLayout = node.text.empty() && !node.children.empty() &&
                            text.find_first_not_of(" \n") == std::string::npos;
    Require(onlyLayout || text == node.text, "the text is kept");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Input input(data, size);
    ExportFormat format;
    format.indent = static_cast<int>(input.Below(6)) - 1;
    format.declaration = !input.Flag();
    const int level = static_cast<int>(input.Below(3));
    Node node("root");
    const std::unique_ptr<XMLElement> root(XMLElement::Create(node.name));
    Grow(input, *root, node, 0);

    std::ostringstream out;
    root->WriteTo(out, format, level);
    const std::string document = out.str();
    const bool declared = document.rfind("<?xml", 0) == 0;
    Require(declared == (format.declaration && level == 0), "a declaration where it is asked for");
    Require(fuzz::IsWellFormed(document.substr(document.find('<'))), "the document is well formed");
    pugi::xml_document parsed;
    Require(parsed.load_buffer(document.data(), document.size(),
                               pugi::parse_default | pugi::parse_ws_pcdata),
            "the document is parsed");
    Compare(node, parsed.document_element());
    return 0;
}
