#include "app/sql/Answers.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "app/base/Errors.h"
#include "fakes/Tables.h"

namespace {

using Groups = app::StatementColumn::Groups;

const std::string kHead =
    "0,accredit,1,1\n0,round,check,1\n0,dialect,sqlite,1\n0,source,7461626c652074,1\n"
    "0,options,o,1\n";

TABLE_TEST(Answers, ReadsWhatClientsPrint, 4) {
    std::string text = kHead;
    std::replace(text.begin(), text.end(), ',', row.Text(1).front());
    text = row.Text(0) + text + row.Text(2);
    const app::Answers answers = app::ParseAnswers(text, "answers");
    std::string rows;
    for (const app::AnswerLine& line : answers.lines) {
        rows += std::to_string(line.column) + "/" + line.part + "/" + line.key.value_or("NULL") +
                "/" + std::to_string(line.count) + ";";
    }
    EXPECT_EQ(rows, row.Text(3));
    EXPECT_EQ(answers.head.source, "table t");
    EXPECT_EQ(answers.fingerprint.size(), app::ParseAnswers(kHead, "").fingerprint.size());
}

// What reading says against an answer.
template <class Read>
std::string Refusal(Read read) {
    try {
        read();
    } catch (const app::InputError& error) {
        return error.what();
    }
    return "";
}

TABLE_TEST(Answers, RefusesWhatIsNoAnswer, 2) {
    const std::string refusal = Refusal([&] { app::ParseAnswers(row.Text(0), "answers"); });
    EXPECT_NE(refusal.find(row.Text(1)), std::string::npos) << refusal;
}

// Four numbers, a text and a missing value beside two categories.
TABLE_TEST(Answers, TakesAWholeAnswer, 3) {
    std::string text = kHead +
                       "0,rows,0a,6\n0,rows,0b,6\n1,texts,,1\n1,count,,4\n1,minimum,1,1\n"
                       "1,maximum,9,1\n1,at most,1,2\n1,center,4,1\n1,scale,1,1\n"
                       "1,deviation,0,1\n1,square,30,1\n1,group,6e2f61,1\n2,group,61,3\n"
                       "2,group,62,2\n2,null,NULL,1\n";
    if (!row.Text(0).empty()) {
        const std::size_t at = text.find(row.Text(0));
        ASSERT_NE(at, std::string::npos);
        text.replace(at, row.Text(0).size(), row.Text(1));
    }
    const std::vector<app::StatementColumn> columns = {
        {"x", app::Storage::Any, true, true, {2.5}, {}, Groups::Texts},
        {"k", app::Storage::Any, false, false, {}, {}, Groups::All}};
    const std::string refusal =
        Refusal([&] { app::TakeAnswers(app::ParseAnswers(text, "answers"), columns); });
    EXPECT_EQ(refusal.empty(), row.Text(2).empty()) << refusal;
    EXPECT_NE(refusal.find(row.Text(2)), std::string::npos) << refusal;
}

}  // namespace
