#include "accredit/host/XMLElement.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <limits>
#include <memory>
#include <pugixml.hpp>
#include <sstream>
#include <string>

#include "fakes/Tables.h"

namespace {

using MCXML_NAMESPACE::ExportFormat;
using MCXML_NAMESPACE::XMLElement;
using Element = std::unique_ptr<XMLElement>;

Element New(const std::string& name) { return Element(XMLElement::Create(name)); }

std::string Written(const XMLElement& element, const ExportFormat& format = {}, int level = 0) {
    std::ostringstream out;
    out << std::hex << std::setfill('*') << std::setw(40);  // a state that must not show
    element.WriteTo(out, format, level);
    return out.str();
}

TABLE_TEST(XMLElement, HoldsATextExactlyOrRefusesItUnchanged, 2) {
    const std::string text = row.Text(0);
    const bool held = row.Is(1, "held", "refused");
    const Element element = New("e");
    ASSERT_TRUE(element->SetAttribute("a", "old") && element->SetText("old"));
    EXPECT_EQ(element->SetAttribute("a", text), held);
    EXPECT_EQ(element->SetAttribute("b", text), held);
    EXPECT_EQ(element->SetText(text), held);

    pugi::xml_document parsed;
    const auto options = pugi::parse_default | pugi::parse_ws_pcdata;
    ASSERT_TRUE(parsed.load_string(Written(*element).c_str(), options)) << Written(*element);
    EXPECT_EQ(parsed.child("e").attribute("a").value(), held ? text : "old");
    EXPECT_EQ(parsed.child("e").text().get(), held ? text : "old");
    EXPECT_EQ(!parsed.child("e").attribute("b").empty(), held);
}

TABLE_TEST(XMLElement, TakesOnlyNamesOfXML, 2) {
    const std::string name = row.Text(0);
    const bool taken = row.Is(1, "taken", "refused");
    const Element element = New(name);
    ASSERT_EQ(element != nullptr, taken);
    EXPECT_TRUE(!taken || element->GetName() == name);
    EXPECT_EQ(New("e")->SetAttribute(name, ""), taken);
}

TEST(XMLElement, WritesChildrenInOrder) {
    const Element root = New("r");
    root->SetAttribute("n", "1");
    root->SetAttribute("m", "2");
    root->SetAttribute("n", "3");
    XMLElement* first = XMLElement::Create("first");
    EXPECT_EQ(root->AddElement(first), 0);
    EXPECT_EQ(root->AddElement(XMLElement::Create("second")), 1);
    XMLElement* inner = XMLElement::Create("inner");
    inner->SetText("t");
    EXPECT_EQ(inner->AddElement(XMLElement::Create("mixed")), 0);
    EXPECT_EQ(first->AddElement(inner), 0);
    EXPECT_EQ(inner->AddElement(XMLElement::Create("twice")), 1);

    EXPECT_EQ(root->AddElement(nullptr), -1);
    EXPECT_EQ(root->AddElement(root.get()), -1);
    EXPECT_EQ(root->AddElement(first), -1) << "a child once";
    EXPECT_EQ(inner->AddElement(root.get()), -1) << "no circle";

    const std::string head = R"(<?xml version="1.0" encoding="UTF-8"?>)";
    EXPECT_EQ(Written(*root), head + R"(
<r n="3" m="2">
  <first>
    <inner>t<mixed/><twice/></inner>
  </first>
  <second/>
</r>
)");
    ExportFormat compact;
    compact.indent = -1;
    const std::string content = "<first><inner>t<mixed/><twice/></inner></first>";
    EXPECT_EQ(Written(*root, compact), head + R"(<r n="3" m="2">)" + content + "<second/></r>");
    EXPECT_EQ(Written(*first, compact, 1), content);
    EXPECT_EQ(Written(*first, {}, 1),
              "  <first>\n    <inner>t<mixed/><twice/></inner>\n  </first>\n");
    const int deepest = std::numeric_limits<int>::max();
    EXPECT_EQ(Written(*first, compact, deepest), content);
    EXPECT_EQ(Written(*first, {}, deepest).find('<'), 64U) << "indentation has an end";
    compact.indent = 0;
    EXPECT_EQ(Written(*first, compact, -7),
              head + "\n<first>\n<inner>t<mixed/><twice/></inner>\n</first>\n");
}

TEST(XMLElement, WritesAndDestroysATreeOfAnyDepth) {
    const int depth = 200000;
    const Element root = New("e");
    XMLElement* last = root.get();
    for (int i = 1; i < depth; ++i) {
        XMLElement* next = XMLElement::Create("e");
        last->AddElement(next);
        last = next;
    }
    ExportFormat compact;
    compact.indent = -1;
    compact.declaration = false;
    EXPECT_EQ(Written(*root, compact).size(), (depth - 1) * std::string("<e></e>").size() + 4);
    EXPECT_LT(Written(*root).size(), std::size_t{depth} * 200);
}

}  // namespace
