#include "accredit/host/XMLElement.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <ostream>

#include "accredit/host/internal/XMLText.h"

namespace MCXML_NAMESPACE {

namespace {

// Deeper levels are not indented further, or a deep tree would be written as mostly blanks.
constexpr std::int64_t kDeepestIndent = 32;

void AppendIndent(std::string& buffer, const ExportFormat& format, std::int64_t level) {
    const std::int64_t levels = std::min(level, kDeepestIndent);
    const auto blanks = static_cast<std::size_t>(std::max(format.indent, 0));
    buffer.append(blanks * static_cast<std::size_t>(levels), ' ');
}

void AppendLineStart(std::string& buffer, const ExportFormat& format, std::int64_t level) {
    if (format.indent < 0) return;
    buffer += '\n';
    AppendIndent(buffer, format, level);
}

}  // namespace

XMLElement* XMLElement::Create(const std::string& name) {
    return MCDetail::IsXMLName(name) ? new XMLElement(name) : nullptr;
}

XMLElement::XMLElement(const std::string& name) : mName(name) {}

XMLElement::~XMLElement() {
    XMLElement* doomed = mFirstChild;
    while (doomed) {
        if (doomed->mFirstChild) {
            doomed->mLastChild->mNextSibling = doomed->mNextSibling;
            doomed->mNextSibling = doomed->mFirstChild;
            doomed->mFirstChild = nullptr;
        }
        XMLElement* next = doomed->mNextSibling;
        delete doomed;
        doomed = next;
    }
}

std::string XMLElement::GetName() const { return mName; }

void XMLElement::WriteTo(std::ostream& out, const ExportFormat& format, int level) const {
    std::int64_t depth = std::max(level, 0);
    std::string buffer;
    if (depth == 0 && format.declaration) {
        buffer += R"(<?xml version="1.0" encoding="UTF-8"?>)";
        buffer += format.indent < 0 ? "" : "\n";
    } else {
        AppendIndent(buffer, format, depth);
    }

    const XMLElement* element = this;
    element->AppendStartTo(buffer);
    while (true) {
        if (element->mFirstChild) {
            // White space beside a text would become part of it.
            ++depth;
            if (element->mText.empty()) AppendLineStart(buffer, format, depth);
            element = element->mFirstChild;
            element->AppendStartTo(buffer);
            continue;
        }
        while (element != this && !element->mNextSibling) {
            element = element->mParent;
            --depth;
            if (element->mText.empty()) AppendLineStart(buffer, format, depth);
            element->AppendEndTo(buffer);
        }
        if (element == this) break;
        if (element->mParent->mText.empty()) AppendLineStart(buffer, format, depth);
        element = element->mNextSibling;
        element->AppendStartTo(buffer);
    }
    if (format.indent >= 0) buffer += '\n';
    out.write(buffer.data(), static_cast<std::streamsize>(buffer.size()));
}

int XMLElement::AddElement(XMLElement* child) noexcept {
    if (!child || child->mParent || child == this) return -1;
    if (child->mFirstChild) {
        for (const XMLElement* above = mParent; above; above = above->mParent) {
            if (above == child) return -1;
        }
    }
    child->mParent = this;
    (mFirstChild ? mLastChild->mNextSibling : mFirstChild) = child;
    mLastChild = child;
    return mChildCount++;
}

bool XMLElement::SetAttribute(const std::string& name, const std::string& value) {
    if (!MCDetail::IsXMLName(name) || !MCDetail::IsXMLText(value)) return false;
    const auto found = std::find_if(mAttributes.begin(), mAttributes.end(),
                                    [&](const auto& entry) { return entry.first == name; });
    if (found != mAttributes.end()) {
        found->second = value;
    } else {
        mAttributes.emplace_back(name, value);
    }
    return true;
}

bool XMLElement::SetText(const std::string& text) {
    if (!MCDetail::IsXMLText(text)) return false;
    mText = text;
    return true;
}

// The whole element if nothing stands in it but text.
void XMLElement::AppendStartTo(std::string& buffer) const {
    buffer += '<';
    buffer += mName;
    for (const auto& [name, value] : mAttributes) {
        buffer += ' ';
        buffer += name;
        buffer += "=\"";
        MCDetail::AppendEscaped(buffer, value);
        buffer += '"';
    }
    if (!mFirstChild && mText.empty()) {
        buffer += "/>";
        return;
    }
    buffer += '>';
    MCDetail::AppendEscaped(buffer, mText);
    if (!mFirstChild) AppendEndTo(buffer);
}

void XMLElement::AppendEndTo(std::string& buffer) const {
    buffer += "</";
    buffer += mName;
    buffer += '>';
}

}  // namespace MCXML_NAMESPACE
