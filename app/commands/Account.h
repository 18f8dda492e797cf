#pragma once

#include <string>
#include <vector>

#include "app/base/Screen.h"
#include "app/commands/Learn.h"
#include "app/data/ColumnKinds.h"

namespace app {

/// What was taken of the data: its rows, and a line a column with the kind, the range or the number
/// of categories, and the missing values.
std::string AccountOf(const Learned& learned, const Screen& screen);

/// What a person should know of the columns of a reference's data, with what to do about it:
/// columns that are left out, cells that are no numbers, a delimiter that was not found. One text
/// each; of several files they name the one that a cell stands in.
std::vector<std::string> RemarksOn(const SettledColumns& data, bool isOneFile);

/// The same of all that was learned: also columns of which nearly all cases lie in one bin, and
/// unreadable cells of new data.
std::vector<std::string> RemarksOn(const Learned& learned);

}  // namespace app
