#include "app/data/PieceQueue.h"

#include <pthread.h>

#include <csignal>
#include <utility>

#include "app/base/Errors.h"
#include "app/data/RowSplitter.h"

namespace app {

PieceQueue::PieceQueue(PieceReader& reader, RowFormat format, std::unique_ptr<CsvPiece> first,
                       std::size_t helpers)
    : mReader(reader), mFormat(std::move(format)), mHelpers(helpers) {
    Add(std::move(first));
}

PieceQueue::~PieceQueue() {
    {
        const std::lock_guard<std::mutex> lock(mMutex);
        mIsEnding = true;
    }
    mHasWaiting.notify_all();
    for (std::thread& thread : mThreads) thread.join();
}

std::unique_ptr<CsvPiece> PieceQueue::Take(std::unique_ptr<CsvPiece> used) {
    if (used) mSpare.push_back(std::move(used));
    ReadAhead();
    if (mJobs.empty()) {
        if (mFailure) std::rethrow_exception(mFailure);
        return nullptr;
    }
    std::unique_lock<std::mutex> lock(mMutex);
    while (mJobs.front().state != State::Done) {
        if (Job* const waiting = FindWaiting()) {
            Split(*waiting, lock);
        } else {
            mHasDone.wait(lock);
        }
    }
    Job job = std::move(mJobs.front());
    mJobs.pop_front();
    if (job.failure) std::rethrow_exception(job.failure);
    return std::move(job.piece);
}

// Each helper has a piece at work and one to go on with.
void PieceQueue::ReadAhead() {
    while (mJobs.size() < 2 * mHelpers + 1) {
        if (!ReadOne()) return;
    }
    if (mThreads.size() < mHelpers) StartHelpers();
}

bool PieceQueue::ReadOne() {
    if (mIsRead) return false;
    try {
        std::unique_ptr<CsvPiece> piece = SparePiece();
        mIsRead = !mReader.Read(*piece);
        if (!mIsRead) Add(std::move(piece));
    } catch (const Cancelled&) {
        throw;
    } catch (...) {
        mFailure = std::current_exception();
        mIsRead = true;
    }
    return !mIsRead;
}

std::unique_ptr<CsvPiece> PieceQueue::SparePiece() {
    if (mSpare.empty()) return std::make_unique<CsvPiece>();
    std::unique_ptr<CsvPiece> piece = std::move(mSpare.back());
    mSpare.pop_back();
    return piece;
}

void PieceQueue::Add(std::unique_ptr<CsvPiece> piece) {
    const std::lock_guard<std::mutex> lock(mMutex);
    mJobs.push_back({std::move(piece)});
    mHasWaiting.notify_one();
}

// Signals are for the thread that reads, which they interrupt. Where no more threads can be had,
// those that there are do.
void PieceQueue::StartHelpers() {
    sigset_t all;
    sigset_t old;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &old);
    try {
        while (mThreads.size() < mHelpers) mThreads.emplace_back([this] { Help(); });
    } catch (const std::exception&) {
        mHelpers = mThreads.size();
    }
    pthread_sigmask(SIG_SETMASK, &old, nullptr);
}

void PieceQueue::Help() {
    std::unique_lock<std::mutex> lock(mMutex);
    while (!mIsEnding) {
        if (Job* const waiting = FindWaiting()) {
            Split(*waiting, lock);
            mHasDone.notify_one();
        } else {
            mHasWaiting.wait(lock);
        }
    }
}

PieceQueue::Job* PieceQueue::FindWaiting() {
    for (Job& job : mJobs) {
        if (job.state == State::Waiting) return &job;
    }
    return nullptr;
}

// Lets the others go on meanwhile.
void PieceQueue::Split(Job& job, std::unique_lock<std::mutex>& lock) {
    job.state = State::BeingSplit;
    lock.unlock();
    try {
        RowSplitter(mFormat, *job.piece).SplitRows();
    } catch (...) {
        job.failure = std::current_exception();
    }
    lock.lock();
    job.state = State::Done;
}

}  // namespace app
