#include "app/base/Printable.h"

#include <gtest/gtest.h>
#include <utf8proc.h>

#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "Folder.h"
#include "app/base/Characters.h"
#include "app/base/HtmlText.h"
#include "app/base/JsonText.h"
#include "app/base/ShellText.h"
#include "fakes/Repeats.h"

namespace {

TABLE_TEST(Printable, EscapesWhatCouldNotBeSeen, 4) {
    EXPECT_EQ(app::Printable(row.Text(0)), row.Text(1));
    EXPECT_EQ(app::JsonText(row.Text(0)), row.Text(2));
    EXPECT_EQ(app::ShellQuoted(row.Text(0)), row.Text(3));
}

TABLE_TEST(Printable, IsEscapedForAPage, 2) { EXPECT_EQ(app::HtmlText(row.Text(0)), row.Text(1)); }

TABLE_TEST(Printable, CutsToWhatAPersonReads, 3) {
    EXPECT_EQ(app::Shortened(row.Text(0)), row.Text(1));
    EXPECT_EQ(app::ShownName(row.Text(0), 17), row.Text(2));
}

TEST(Printable, CutsTextsOfAnyLengthAtOnce) {
    // A tenth of a second or so if it is cut first, hours if it is escaped first.
    for (const char* piece : {"x", "\x01", "\xCC\x81", "\xE1\x80\xAC"}) {
        std::string text = "x";
        while (text.size() < 9'000'000) text += piece;
        for (int i = 0; i < 1000; ++i) ASSERT_LT(app::ShownName(text, 1).size(), 200U);
    }
}

TABLE_TEST(Printable, KnowsTheWidthOnATerminal, 2) {
    EXPECT_EQ(app::DisplayWidth(row.Text(0)), row.Number(1));
}

TABLE_TEST(Printable, GivesOptionsThatCanBeTyped, 2) {
    EXPECT_EQ(app::ShellOption("--ignore", fakes::Repeated(row.Text(0))), row.Text(1));
}

// Texts from bytes and characters that are likely to go wrong, and any others.
std::vector<std::string> RandomTexts() {
    const std::string pieces[] = {
        "\\",           "x5",          "41",       "'",  "\"",   " ",        "...#",
        "\xC3\xA9",     "e",           "\xCC\x81", "\n", "\xFF", "\xE2\x82", "\xE1\x84\x80",
        "\xE1\x85\xA1", "\xE2\x80\x8B"};
    std::mt19937 random(7);
    std::vector<std::string> texts;
    for (int i = 0; i < 20'000; ++i) {
        std::string text;
        for (auto n = random() % 12; n > 0; --n) {
            const auto kind = random() % 4;
            utf8proc_uint8_t bytes[4];
            const auto code =
                static_cast<std::int32_t>(1 + random() % (kind == 2 ? 0x32FFU : 0x10FFFFU));
            if (kind < 2) text += pieces[random() % std::size(pieces)];
            if (kind == 2 || kind == 3) {
                text.append(reinterpret_cast<char*>(bytes),
                            static_cast<std::size_t>(utf8proc_encode_char(code, bytes)));
            }
        }
        texts.push_back(text);
    }
    return texts;
}

// The text in which each \xNN is the byte that it stands for.
std::string WithBytes(std::string text) {
    for (std::size_t at = 0; (at = text.find("\\x", at)) != std::string::npos; ++at) {
        const std::string digits = text.substr(at + 2, 2);
        if (digits.size() < 2 || digits.find_first_not_of("0123456789ABCDEF") < 2) continue;
        text.replace(at, 4, 1, static_cast<char>(std::stoi(digits, nullptr, 16)));
    }
    return text;
}

TEST(Printable, DifferentTextsStayDifferent) {
    std::string script = "printf '%s\\0'";
    std::string words;
    for (const std::string& text : RandomTexts()) {
        const std::string shown = app::Printable(text);
        ASSERT_EQ(fakes::Unescaped(shown), text) << shown;
        const auto read = nlohmann::json::parse(app::JsonText(text)).get<std::string>();
        ASSERT_EQ(WithBytes(read), text) << read;
        // What is equivalent for Unicode looks the same.
        const std::unique_ptr<utf8proc_uint8_t, void (*)(void*)> composed(
            utf8proc_NFC(reinterpret_cast<const utf8proc_uint8_t*>(shown.c_str())), std::free);
        ASSERT_EQ(reinterpret_cast<const char*>(composed.get()), shown);
        script += " " + app::ShellQuoted(text);
        words += text + '\0';
    }
    const fakes::Folder folder;
    fakes::WriteFile("script", script);
    ASSERT_EQ(std::system("bash script > out"), 0);
    EXPECT_EQ(fakes::ReadFile("out"), words);
}

}  // namespace
