#pragma once

#include <memory>
#include <string>
#include <utility>

#include "accredit/host/IMCEncoder.h"

namespace MADocuments {

/// The categories of another encoder, and behind them one more that no value encodes to and that
/// decodes to nothing: it stands for all whose names were not kept.
class EncoderWithOthers : public MCMTD_NAMESPACE::IMCEncoder {
public:
    explicit EncoderWithOthers(std::shared_ptr<MCMTD_NAMESPACE::IMCEncoder> named)
        : mNamed(std::move(named)) {}

    int GetValueType() const override { return mNamed->GetValueType(); }
    int GetNumCategories() const override { return mNamed->GetNumCategories() + 1; }
    double EncodeString(const std::string& value) const override {
        return mNamed->EncodeString(value);
    }
    double EncodeNumber(double value) const override { return mNamed->EncodeNumber(value); }
    std::string DecodeString(int code) const override { return mNamed->DecodeString(code); }
    double DecodeNumber(int code) const override { return mNamed->DecodeNumber(code); }

private:
    std::shared_ptr<MCMTD_NAMESPACE::IMCEncoder> mNamed;
};

/// The categories of another encoder without that of one code. Those behind it move up.
class EncoderWithout : public MCMTD_NAMESPACE::IMCEncoder {
public:
    /// `whole` must outlive this. The code is one that it has and that no value encodes to, or -1,
    /// which takes none away.
    EncoderWithout(const MCMTD_NAMESPACE::IMCEncoder& whole, int code)
        : mWhole(whole), mCode(code) {}

    int GetValueType() const override { return mWhole.GetValueType(); }
    int GetNumCategories() const override {
        return mWhole.GetNumCategories() - (mCode < 0 ? 0 : 1);
    }
    double EncodeString(const std::string& value) const override {
        return MovedUp(mWhole.EncodeString(value));
    }
    double EncodeNumber(double value) const override { return MovedUp(mWhole.EncodeNumber(value)); }
    std::string DecodeString(int code) const override { return mWhole.DecodeString(Whole(code)); }
    double DecodeNumber(int code) const override { return mWhole.DecodeNumber(Whole(code)); }

private:
    double MovedUp(double code) const { return mCode >= 0 && code > mCode ? code - 1.0 : code; }
    int Whole(int code) const { return mCode >= 0 && code >= mCode ? code + 1 : code; }

    const MCMTD_NAMESPACE::IMCEncoder& mWhole;
    int mCode;
};

}  // namespace MADocuments
