#pragma once

#include <cstddef>
#include <functional>
#include <ios>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include "accredit/host/MCQueryCancel.h"
#include "accredit/host/MultiPassRecordIter.h"

namespace fakes {

/// A record source over rows that can fail on command and counts what is asked of it.
class RecordSource : public MCCommon::MultiPassRecordIter {
public:
    explicit RecordSource(std::vector<std::vector<double>> rows) : mRows(std::move(rows)) {}

    /// From the n-th fetch of all passes on (counting from 1) null is delivered, for this reason.
    void FailAt(std::size_t fetch, int errorState) {
        mFailAt = fetch;
        mErrorState = errorState;
    }
    void FailRewind(int answer) { mRewindAnswer = answer; }

    bool HasMoreRecords() override { return mNext < mRows.size(); }
    const MCCommon::Record* GetNextRecord() override {
        ++fetches;
        if (mFailAt != 0 && fetches >= mFailAt) return nullptr;
        const std::vector<double>& row = mRows[mNext++];
        mRecord = MCCommon::Record(row.data(), static_cast<int>(row.size()));
        return &mRecord;
    }
    int GetErrorState() override { return mErrorState; }
    int Rewind() override {
        ++rewinds;
        mNext = 0;
        return mRewindAnswer;
    }

    std::size_t fetches = 0;
    int rewinds = 0;

private:
    std::vector<std::vector<double>> mRows;
    std::size_t mNext = 0;
    std::size_t mFailAt = 0;
    int mErrorState = 0;
    int mRewindAnswer = 0;
    MCCommon::Record mRecord;
};

/// A query that says cancel from its n-th poll on (counting from 1), 0 never; or that does
/// something at that poll instead.
class Query : public MCQueryCancel {
public:
    explicit Query(int cancelAt = 0, std::function<void()> instead = nullptr)
        : mCancelAt(cancelAt), mInstead(std::move(instead)) {}
    bool QueryCancel() override {
        if (++polls == mCancelAt && mInstead) mInstead();
        return polls >= mCancelAt && mCancelAt != 0 && !mInstead;
    }

    int polls = 0;

private:
    int mCancelAt;
    std::function<void()> mInstead;
};

/// A place for output that takes so many bytes, and then refuses the rest or throws.
class FullBuffer : public std::streambuf {
public:
    FullBuffer(std::size_t room, bool throws) : mRoom(room), mThrows(throws) {}

    std::string taken;

protected:
    int overflow(int byte) override {
        if (taken.size() < mRoom) {
            taken += static_cast<char>(byte);
            return byte;
        }
        if (mThrows) throw std::ios_base::failure("full");
        return traits_type::eof();
    }

private:
    std::size_t mRoom;
    bool mThrows;
};

}  // namespace fakes
