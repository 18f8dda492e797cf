#pragma once

#include <string>
#include <string_view>

#include "accredit/documents/SourceText.h"

namespace app {

/// Looks through an XML document, in one sweep and with no memory, for what a parser that trusts
/// its input would pass over, misread or choke on: elements nested more than 32 deep, more than 16
/// million elements, attributes and texts, bytes that are not UTF-8 and characters that XML 1.0
/// forbids, document types with their entities, CDATA sections, references to anything but a
/// character that XML 1.0 admits or to one of its five entities, text outside the root, processing
/// instructions, and what no comment and no text may hold. Throws InputError. What is not XML at
/// all is left to the parser, which finds it.
void ScanXml(const SourceText& document);

/// Whether XML can hold this text: it is UTF-8 without the characters that XML 1.0 forbids.
bool IsXmlText(const std::string& text);

/// Whether a file that begins like this is meant to be an XML document: after a byte-order mark and
/// white space comes a declaration, a comment, a document type or the element PMML, or the file
/// ends within the first letters of one of these.
bool BeginsLikeXml(std::string_view beginning);

/// Whether a file that begins like this has the byte-order mark of UTF-16, which no data file and
/// no document of this program has.
bool BeginsLikeUtf16(std::string_view beginning);

}  // namespace app
