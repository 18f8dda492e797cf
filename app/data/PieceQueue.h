#pragma once

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "app/data/CsvPiece.h"
#include "app/data/PieceReader.h"

namespace app {

/// The pieces of a file in their order, each split into its rows. The file is read by the thread
/// that asks for the pieces, so that what can interrupt it stays as it is; pieces that are read
/// ahead are split by helping threads, and by this one when it would have to wait. A file of a few
/// pieces is not worth their start.
class PieceQueue {
public:
    /// `first` is what is left of the piece that was read last. The reader must outlive this.
    PieceQueue(PieceReader& reader, RowFormat format, std::unique_ptr<CsvPiece> first,
               std::size_t helpers);
    PieceQueue(const PieceQueue&) = delete;
    PieceQueue& operator=(const PieceQueue&) = delete;
    /// Waits for the pieces that are being split.
    ~PieceQueue();

    /// The next piece, null at the end of the file. `used` is one that is of no more use, or null.
    /// What goes wrong with reading is thrown in the place of the piece that could not be read, an
    /// interrupt at once. Throws InputError, OutputError, Cancelled.
    std::unique_ptr<CsvPiece> Take(std::unique_ptr<CsvPiece> used);

private:
    enum class State { Waiting, BeingSplit, Done };

    struct Job {
        std::unique_ptr<CsvPiece> piece;
        State state = State::Waiting;
        std::exception_ptr failure = nullptr;
    };

    void ReadAhead();
    bool ReadOne();
    std::unique_ptr<CsvPiece> SparePiece();
    void Add(std::unique_ptr<CsvPiece> piece);
    void StartHelpers();
    void Help();
    Job* FindWaiting();
    void Split(Job& job, std::unique_lock<std::mutex>& lock);

    PieceReader& mReader;
    const RowFormat mFormat;
    std::size_t mHelpers;
    std::vector<std::unique_ptr<CsvPiece>> mSpare;
    bool mIsRead = false;         // to its end, or as far as
    std::exception_ptr mFailure;  // this came of it

    std::mutex mMutex;  // of what follows, and of the jobs
    std::condition_variable mHasWaiting;
    std::condition_variable mHasDone;
    std::deque<Job> mJobs;
    bool mIsEnding = false;
    std::vector<std::thread> mThreads;
};

}  // namespace app
