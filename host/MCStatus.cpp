#include "accredit/host/MCStatus.h"

namespace MCCommon {

void MCStatus::SetDiscreteDatum(unsigned int index, long value) {
    if (index >= kMaxData) return;
    mHasDatum[index] = true;
    mData[index] = value;
}

bool MCStatus::HasDiscreteDatum(unsigned int index) const {
    return index < kMaxData && mHasDatum[index];
}

long MCStatus::GetDiscreteDatum(unsigned int index) const {
    return HasDiscreteDatum(index) ? mData[index] : -1;
}

const char* MCStatus::GetMessage() const {
    switch (mCode) {
        case 0:
            return "OK";
        case MAStatusCancelled:
            return "Cancelled";
        case MAStatusNoInputVars:
            return "The variable list has no input variable";
        case MAStatusBadCutPoints:
            return "The cut points do not fit the variables or are not strictly ascending";
        case MAStatusRecordSource:
            return "The record source failed to deliver a record or to rewind";
        case MAStatusRecordSize:
            return "A record does not have one value for each variable";
        case MAStatusNoDistStats:
            return "There are no statistics to compare or to export";
        case MAStatusExportFailed:
            return "The document could not be made";
        case MAStatusUnnamedVariable:
            return "An input variable of the reference has no name";
        case MAStatusVariableNotFound:
            return "The new data does not have this variable";
        case MAStatusVariableNotInput:
            return "The variable is not an input variable in the new data";
        case MAStatusVariableTypeDiffers:
            return "The variable has another measurement level in the new data";
        case MAStatusNoCases:
            return "One of the samples has no cases of this variable";
        case MAStatusTooFewCases:
            return "One of the samples has fewer than 2 cases of this variable";
        case MAStatusCategoriesDiffer:
            return "The categories of the two samples cannot be aligned";
        case MAStatusBadWeights:
            return "The weights have the wrong length or a negative entry";
        default:
            return "Unknown status";
    }
}

}  // namespace MCCommon
