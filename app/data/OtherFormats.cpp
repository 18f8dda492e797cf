#include "app/data/OtherFormats.h"

#include <fmt/format.h>

#include <array>

#include "accredit/documents/NumberText.h"
#include "accredit/documents/Reference.h"

namespace app {

namespace {

using namespace std::string_view_literals;

struct Format {
    std::string_view mark;  // that the file begins with
    const char* problem;
};

constexpr const char* kWorkbook =
    "this is a workbook or a zip archive; export the sheet as CSV, or give 'unzip -p FILE' through "
    "a pipe as '-'";
constexpr const char* kOldWorkbook = "this is a workbook; export the sheet as CSV";
constexpr const char* kUtf16 =
    "this text is encoded in UTF-16; 'iconv -f UTF-16 -t UTF-8 FILE' and a pipe to '-' make it "
    "readable";
constexpr const char* kUtf32 =
    "this text is encoded in UTF-32; 'iconv -f UTF-32 -t UTF-8 FILE' and a pipe to '-' make it "
    "readable";
constexpr const char* kXz = "this is an xz archive; give 'xz -dc FILE' through a pipe as '-'";
constexpr const char* kBzip2 =
    "this is a bzip2 archive; give 'bzip2 -dc FILE' through a pipe as '-'";
constexpr const char* kLz4 = "this is an lz4 archive; give 'lz4 -dc FILE' through a pipe as '-'";
constexpr const char* kParquet =
    "this is a Parquet file; give it through a pipe as '-', for instance by duckdb -c \"COPY (FROM "
    "'FILE') TO '/dev/stdout' (FORMAT csv, HEADER)\"";
constexpr const char* kDatabase =
    "this is an SQLite database; give 'sqlite3 -csv -header FILE \"SELECT ...\"' through a pipe as "
    "'-'";
constexpr const char* kBinary = "this is a binary file; export it as CSV";
constexpr const char* kPage = "this is a page for a browser; export the table in it as CSV";
constexpr const char* kArchive =
    "this is an archive within an archive; decompress it and give it through a pipe as '-'";
constexpr const char* kJson = "this is JSON; export it as CSV";

// A mark is found before any other that it begins with.
constexpr std::array<Format, 22> kFormats = {{
    {"PK\x03\x04"sv, kWorkbook},
    {"\xD0\xCF\x11\xE0"sv, kOldWorkbook},
    {"\xFF\xFE\x00\x00"sv, kUtf32},
    {"\x00\x00\xFE\xFF"sv, kUtf32},
    {"\xFF\xFE"sv, kUtf16},
    {"\xFE\xFF"sv, kUtf16},
    {"\xFD"
     "7zXZ"sv,
     kXz},
    {"BZh91AY&SY"sv, kBzip2},
    {"\x04\x22\x4D\x18"sv, kLz4},
    {"PAR1\x15"sv, kParquet},
    {"SQLite format 3\0"sv, kDatabase},
    {"ARROW1\0"sv, kBinary},
    {"Obj\x01"sv, kBinary},
    {"\x89HDF"sv, kBinary},
    {"\x93NUMPY"sv, kBinary},
    {"%PDF-"sv, kBinary},
    {"\x7F"
     "ELF"sv,
     kBinary},
    {"<!DOCTYPE html"sv, kPage},
    {"<!doctype html"sv, kPage},
    {"<html"sv, kPage},
    {"\x1F\x8B"sv, kArchive},
    {"\x28\xB5\x2F\xFD"sv, kArchive},
}};

// Blanks and line ends do not count between the first characters.
bool BeginsLikeJson(std::string_view text) {
    std::string characters;
    for (const char byte : text) {
        if (byte == ' ' || byte == '\t' || byte == '\r' || byte == '\n') continue;
        characters += byte;
        if (characters.size() == 3) break;
    }
    return characters.substr(0, 2) == "{\"" || characters == "[{\"" || characters == "[[\"";
}

}  // namespace

std::optional<std::string> OtherFormat(std::string_view beginning) {
    for (const Format& format : kFormats) {
        if (beginning.substr(0, format.mark.size()) == format.mark) return format.problem;
    }
    if (BeginsLikeJson(beginning)) return kJson;
    if (MADocuments::BeginsLikeDocument(beginning)) {
        return "this looks like a stored reference, not data";
    }
    return std::nullopt;
}

}  // namespace app
