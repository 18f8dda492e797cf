#include "accredit/host/MCVarList.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

#include "accredit/host/MCTableRecordIter.h"
#include "fakes/Fakes.h"

namespace {

using namespace MCMTD_NAMESPACE;
using fakes::List;
using MCCommon::MCStatus;

TEST(MCVarList, FindsNamesAndAnswersForPositionsThatDoNotExist) {
    EXPECT_EQ(MCVarList().Size(), 0U);
    EXPECT_LT(MCVarList().FindVariable("age"), 0);
    const MCVarList list = List("(id) age colour:red,blue age");
    EXPECT_EQ(list.Size(), 4U);
    EXPECT_EQ(list.GetNumInputVars(), 3);
    EXPECT_EQ(list.FindVariable("age"), 1) << "the first of two namesakes";
    EXPECT_LT(list.FindVariable("Age"), 0);
    EXPECT_EQ(list.GetVariableRole(0), 100) << "a role of an application";
    EXPECT_EQ(list.GetVarAt(3)->GetName(), "age");
    EXPECT_EQ(list.GetEncoderAt(2)->DecodeString(1), "blue");
    EXPECT_EQ(list.GetEncoderAt(1)->GetNumCategories(), 0) << "a variable without an encoder";
    for (const int position : {-1, 4, 1 << 30}) {
        EXPECT_EQ(list.GetVarAt(position), nullptr);
        EXPECT_EQ(list.GetVariableRole(position), IMCVariable::VariableRoleNone);
        EXPECT_EQ(list.GetEncoderAt(position)->GetNumCategories(), 0);
    }
}

// A variable whose name can change.
class Renamable : public MCVariable {
public:
    Renamable() : MCVariable(Continuous("")) {}
    std::string GetName() const override { return name; }
    std::string name = "before";
};

TEST(MCVarList, ACopyStandsAloneButSharesWhatIsShared) {
    const auto shared = std::make_shared<MCStringEncoder>();
    auto list = std::make_unique<MCVarList>(List("colour:red"));
    list->Add(Renamable());
    list->AddShared(std::make_shared<MCVariable>(MCVariable::Categorical("s", 0)), shared);
    const MCVarList copy(*list);
    MCVarList assigned = List("gone");
    assigned = *list;
    dynamic_cast<Renamable&>(*list->GetVarAt(1)).name = "after";
    list.reset();
    shared->AddCategory("late");
    const MCVarList& self = assigned;
    assigned = self;
    for (const MCVarList* survivor : {&copy, &self}) {
        EXPECT_EQ(survivor->Size(), 3U);
        EXPECT_EQ(survivor->GetVarAt(1)->GetName(), "before");
        EXPECT_EQ(survivor->GetEncoderAt(0)->EncodeString("red"), 0.0);
        EXPECT_EQ(survivor->FindVariable("colour"), 0);
        EXPECT_LT(survivor->FindVariable("gone"), 0);
        EXPECT_EQ(survivor->GetEncoderAt(2)->EncodeString("late"), 0.0);
    }
}

TEST(MCVarList, FindsNamesAsTheyAreNow) {
    MCVarList list = List("a b");
    for (int i = 0; i < 2; ++i) list.Add(Renamable());
    const auto rename = [](MCVarList& renamed, int position, const std::string& name) {
        dynamic_cast<Renamable&>(*renamed.GetVarAt(position)).name = name;
    };
    rename(list, 2, "after");
    EXPECT_EQ(list.FindVariable("after"), 2);
    EXPECT_EQ(list.FindVariable("before"), 3) << "the other variable of that name";
    EXPECT_EQ(list.FindVariable("gone"), -1);
    rename(list, 3, "a");
    EXPECT_EQ(list.FindVariable("a"), 0);
    const MCVarList copy(list);
    MCVarList moved(std::move(list));
    rename(moved, 2, "later");
    EXPECT_EQ(copy.FindVariable("after"), 2) << "a copy has variables of its own";
    EXPECT_EQ(moved.FindVariable("later"), 2);
    EXPECT_EQ(list.Size(), 0U);
    EXPECT_EQ(list.FindVariable("a"), -1);
    MCVarList& self = moved;
    moved = std::move(self);
    EXPECT_EQ(moved.Size(), 4U);
    EXPECT_EQ(moved.FindVariable("b"), 1);
    list = std::move(moved);
    EXPECT_EQ(list.FindVariable("later"), 2);
}

// What an encoder of texts or numbers makes of a cell, as a table has it.
std::string Answer(const IMCEncoder& encoder, const std::string& question, const fakes::Row& row) {
    if (question == "EncodeString") return fakes::ToText({encoder.EncodeString(row.Text(2))});
    if (question == "EncodeNumber") return fakes::ToText({encoder.EncodeNumber(row.Number(2))});
    if (question == "DecodeString") return encoder.DecodeString(static_cast<int>(row.Number(2)));
    if (question != "DecodeNumber") fakes::Refuse(question, "is no operation");
    return fakes::ToText({encoder.DecodeNumber(static_cast<int>(row.Number(2)))});
}

TABLE_TEST(Encoders, MapBothWaysAndAnswerForTheUnknown, 4) {
    const MCVarList list = List(row.Text(0));
    EXPECT_EQ(Answer(*list.GetEncoderAt(0), row.Text(1), row), row.Text(3));
}

template <class Encoder, class Category>
void MoveAndAdd(const Category& first, const Category& second) {
    Encoder source({first, second});
    Encoder target(std::move(source));
    EXPECT_EQ(source.GetNumCategories(), 0);
    EXPECT_EQ(source.AddCategory(second), 0) << "empty and of use";
    EXPECT_EQ(source.AddCategory(second), 0);
    EXPECT_EQ(target.AddCategory(second), 1);
    source = std::move(target);
    EXPECT_EQ(source.AddCategory(second), 1);
    EXPECT_EQ(target.GetNumCategories(), 0);
    EXPECT_EQ(target.AddCategory(second), 0);
    EXPECT_EQ(target.AddCategory(first), 1);
}

TEST(Encoders, AreEmptyAfterAMove) {
    MoveAndAdd<MCStringEncoder, std::string>("a", "b");
    MoveAndAdd<MCNumberEncoder>(1.0, fakes::ToNumber("nan"));
    EXPECT_NE(MCStringEncoder().GetValueType(), IMCEncoder::ValueTypeNumber);
    EXPECT_EQ(MCNumberEncoder().GetValueType(), 2);
}

TEST(MCTableRecordIter, DeliversRewindsAndShortensTheLastRecord) {
    MCCommon::MCTableRecordIter iter({1, 2, 3, 4, 5}, 2);
    for (int pass = 0; pass < 2; ++pass) {
        for (const int size : {2, 2, 1}) {
            ASSERT_TRUE(iter.HasMoreRecords());
            EXPECT_EQ(iter.GetNextRecord()->Size(), size);
        }
        EXPECT_FALSE(iter.HasMoreRecords());
        EXPECT_EQ(iter.GetNextRecord(), nullptr);
        EXPECT_EQ(iter.Rewind(), 0);
    }
    EXPECT_EQ(iter.GetNextRecord()->GetAll()[1], 2.0);
    EXPECT_FALSE(MCCommon::MCTableRecordIter({1.0}, 0).HasMoreRecords());
}

TABLE_TEST(MCStatus, HasAMessageForEachCode, 2) {
    const MCStatus status(static_cast<long>(row.Number(0)), false);
    EXPECT_EQ(status.IsOK(), row.Number(0) == 0);
    EXPECT_STREQ(status.GetMessage(), row.Text(1).c_str());
}

TEST(MCStatus, CarriesData) {
    MCStatus status(MAStatusVariableNotFound, false);
    EXPECT_EQ(status.GetDiscreteDatum(0), -1);
    status.SetDiscreteDatum(0, 5);
    status.SetDiscreteDatum(MCStatus::kMaxData, 6);
    const MCStatus copy = status;
    EXPECT_EQ(copy.GetDiscreteDatum(0), 5);
    EXPECT_EQ(copy.GetDiscreteDatum(MCStatus::kMaxData), -1);
    status = MCStatus();
    EXPECT_FALSE(status.HasDiscreteDatum(0)) << "assignment replaces the whole status";
}

}  // namespace
