#include "accredit/diststats/MASummaryBuilder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <memory>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "fakes/Summaries.h"

namespace {

using fakes::Contents;
using fakes::List;
using fakes::Numbers;

TABLE_TEST(SummaryBuilder, RefusesAndKeepsWhatItHas, 5) {
    EXPECT_EQ(fakes::CodeOf([&] {
                  MASummaryBuilder builder(List(row.Text(0)), row.Lists(1));
                  for (const Numbers& record : row.Lists(2))
                      EXPECT_TRUE(builder.Add(record).IsOK());
                  const std::string before = Contents(builder.GetDistStats());
                  const MCCommon::MCStatus status = builder.Add(row.Numbers(3));
                  EXPECT_EQ(Contents(builder.GetDistStats()) == before, !status.IsOK());
                  EXPECT_EQ(builder.GetRecordCount() == row.Lists(2).size(), !status.IsOK());
                  return status;
              }),
              row.Number(4));
}

TEST(SummaryBuilder, GivesAfterEveryRecordWhatAPassGives) {
    const double inf = std::numeric_limits<double>::infinity();
    const Numbers odd = {fakes::kMissing,
                         fakes::kMissing,
                         std::nan(""),
                         inf,
                         -inf,
                         0.0,
                         -0.0,
                         -1.0,
                         -0.5,
                         2.9,
                         1e308,
                         -1e308,
                         5e-324,
                         2147483648.0,
                         -2147483649.,
                         1e16,
                         5000.0,
                         1.0};
    const std::vector<std::string> kinds = {"v",   "(v)",   "v/2",   "v/3",
                                            "v/0", "v:a,b", "v#1,2", "''"};
    std::mt19937 random(11);
    for (int trial = 0; trial < 300; ++trial) {
        std::string words = "v";
        for (std::size_t more = random() % 6; more > 0; --more) {
            words += ' ' + kinds[random() % kinds.size()];
        }
        const auto list = List(words);
        std::vector<Numbers> cutPoints(static_cast<std::size_t>(list.GetNumInputVars()));
        for (Numbers& cuts : cutPoints) {
            for (std::size_t length = random() % 9; cuts.size() < length;) {
                cuts.push_back(static_cast<double>(2 * cuts.size()) - 3.0);
            }
            if (random() % 4 == 0 && !cuts.empty()) cuts.back() = inf;
        }
        std::vector<Numbers> rows;
        MASummaryBuilder builder(list, cutPoints);
        for (int record = 0; record < 24; ++record) {
            if (record == 8) {
                builder.Clear();
                rows.clear();
            }
            MASummaryBuilder moved(std::move(builder));
            builder = std::move(moved);
            ASSERT_EQ(Contents(builder.GetDistStats()),
                      Contents(fakes::Summary(list, rows, cutPoints)))
                << words << ", " << record;
            EXPECT_EQ(builder.GetRecordCount(), rows.size());
            // In every second trial without what makes moments NaN.
            const std::size_t from = trial % 2 == 0 ? 0 : 5;
            rows.emplace_back();
            for (unsigned int i = 0; i < list.Size(); ++i) {
                const std::size_t which = random() % (2 * odd.size());
                rows.back().push_back(which >= from && which < odd.size()
                                          ? odd[which]
                                          : static_cast<double>(random() % 64) / 8.0 - 2.0);
            }
            ASSERT_TRUE(builder.Add(rows.back()).IsOK());
        }
    }
}

TEST(SummaryBuilder, SharesAnEncoderThatGrows) {
    const auto encoder = std::make_shared<MCMTD_NAMESPACE::MCStringEncoder>();
    MCMTD_NAMESPACE::MCVarList list;
    list.AddShared(std::make_shared<MCMTD_NAMESPACE::MCVariable>("c", 2), encoder);
    MASummaryBuilder builder(list, {{}});
    MADistStats early;
    for (const std::string category : {"a", "b", "a"}) {
        EXPECT_TRUE(builder.Add({1.0 * encoder->AddCategory(category)}).IsOK());
        if (early.GetVarCount() == 0) early = builder.GetDistStats();
    }
    EXPECT_EQ(Contents(early), "1; M M M M; ; 1");
    EXPECT_EQ(Contents(builder.GetDistStats()), "3; M M M M; ; 2 1");
    EXPECT_EQ(early.GetVarList().GetEncoderAt(0)->DecodeString(1), "b");
}

}  // namespace
