// How the program escapes text for a terminal.
#if defined(MC3DS_HOST_PARTS)

#include "../host/base/base.h"
#include "harness.h"

using namespace std::string_view_literals;

TEST(TerminalTextTest, Utf8StaysAndAllElseIsSpeltOut)
{
    const struct {
        std::string_view text, shown;
    } rows[] = {
        {"plain ~", "plain ~"},
        {"\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80 \xC2\xA0",
         "\xC3\xA4 \xE2\x82\xAC \xF0\x9F\x98\x80 \xC2\xA0"},
        {"\x1B[2J\t\x7F\0"sv, "\\x1b[2J\\x09\\x7f\\x00"},
        {"\x9B\x32J", "\\x9b2J"},                            // a control character as one byte
        {"\xC2\x9B\x32J\xC2\x80", "\\xc2\\x9b2J\\xc2\\x80"}, // and as UTF-8
        {"\xE4\xC3\xA4", "\\xe4\xC3\xA4"},
        {"a\xE2\x82", "a\\xe2\\x82"},             // truncated
        {"\xF4\x8F\xBF\xBF", "\xF4\x8F\xBF\xBF"}, // the last character
        {"\x1f\x7f ", "\\x1f\\x7f "},
        {"\xC0\xAF\xE0\x80\xAF", "\\xc0\\xaf\\xe0\\x80\\xaf"},                            // overlong
        {"\xED\xA0\x80\xF4\x90\x80\x80\xFF", "\\xed\\xa0\\x80\\xf4\\x90\\x80\\x80\\xff"}, // no characters
    };
    for (const auto &row : rows)
        EXPECT_EQ(Visible(row.text), row.shown);
    EXPECT_EQ(Visible("\ta\tb\n", true), "\ta\tb\\x0a");
}

#endif
