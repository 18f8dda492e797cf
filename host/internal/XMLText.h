#pragma once

#include <string>
#include <string_view>

namespace MCDetail {

/// Whether XML 1.0 can hold this text: UTF-8 of characters that the standard admits. These are
/// tab, line feed, carriage return and everything from U+0020 on except surrogates, U+FFFE and
/// U+FFFF. (XML 1.0, production 2, Char.)
bool IsXMLText(std::string_view text);

/// Whether this is a name in XML 1.0, fifth edition (production 5, Name).
bool IsXMLName(std::string_view text);

/// Appends a text that IsXMLText accepts in a form that stands for exactly this text, between tags
/// as well as in an attribute value between double quotes. Tab, line feed and carriage return
/// become character references, since a reader would change them.
void AppendEscaped(std::string& buffer, std::string_view text);

/// The shortest decimal number that gives the same double back, whatever the locale. `value` is
/// finite.
std::string FormatNumber(double value);

/// The digits of a whole number without exponent; `value` is whole and not negative.
std::string FormatWhole(double value);

}  // namespace MCDetail
