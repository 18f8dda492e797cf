#pragma once

#include <string>

#include "accredit/host/AccreditExport.h"

/// @file
/// What gives categories their codes.

namespace MCMTD_NAMESPACE {

/// Maps the category values of one categorical variable to codes and back. The codes are 0 to
/// GetNumCategories() - 1; records and frequency vectors carry codes. Applications may derive their
/// own; MCStringEncoder and MCNumberEncoder are ready-made. Several threads may call the constant
/// operations at once.
class ACCREDIT_EXPORT IMCEncoder {
public:
    /// What the category values are. Every value other than ValueTypeNumber means strings.
    enum ValueType : int {
        ValueTypeString = 1,
        ValueTypeNumber = 2,
    };

    virtual ~IMCEncoder() = default;

    /// The kind of the category values, see ValueType.
    virtual int GetValueType() const = 0;

    /// The number of categories, 0 or more.
    virtual int GetNumCategories() const = 0;

    /// The code of a string, or -1 if it is not a category.
    virtual double EncodeString(const std::string& value) const = 0;

    /// The code of a number, or -1 if it is not a category.
    virtual double EncodeNumber(double value) const = 0;

    /// The string of a code; the library asks for codes from 0 to GetNumCategories() - 1 of an
    /// encoder of strings.
    virtual std::string DecodeString(int code) const = 0;

    /// The number of a code; the library asks for codes in the same range of an encoder of numbers.
    virtual double DecodeNumber(int code) const = 0;
};

}  // namespace MCMTD_NAMESPACE
