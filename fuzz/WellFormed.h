#pragma once

#include <libxml/parser.h>

#include <string>

namespace fuzz {

/// Whether a parser that is strict, as the ones under test need not be, takes the document. It
/// knows nothing of namespaces, as XML 1.0 itself.
inline bool IsWellFormed(const std::string& document) {
    constexpr int kQuiet = XML_PARSE_NOERROR | XML_PARSE_NOWARNING | XML_PARSE_NONET;
    xmlParserCtxtPtr context = xmlNewParserCtxt();
    // Without anybody to take the elements, nobody looks for prefixes in their names.
    context->sax->initialized = 1;
    context->sax->startElement = nullptr;
    context->sax->endElement = nullptr;
    xmlFreeDoc(xmlCtxtReadMemory(context, document.data(), static_cast<int>(document.size()),
                                 nullptr, "UTF-8", kQuiet));
    const bool wellFormed = context->wellFormed != 0;
    xmlFreeParserCtxt(context);
    return wellFormed;
}

}  // namespace fuzz
