#include "accredit/documents/DocumentError.h"

#include <string_view>

namespace MADocuments {

namespace {

constexpr std::string_view kBeforeRemedy = "; ";

std::string Prefix(std::size_t line, std::size_t column) {
    return std::to_string(line) + ":" + std::to_string(column) + ": ";
}

}  // namespace

DocumentError::DocumentError(std::size_t line, std::size_t column, const std::string& problem,
                             const std::string& remedy)
    : std::runtime_error(Prefix(line, column).append(problem).append(kBeforeRemedy).append(remedy)),
      mLine(line),
      mColumn(column),
      mProblemBegin(Prefix(line, column).size()),
      mProblemSize(problem.size()) {}

DocumentError::DocumentError(const std::string& problem, const std::string& remedy)
    : std::runtime_error(std::string(problem).append(kBeforeRemedy).append(remedy)),
      mProblemSize(problem.size()) {}

DocumentError::DocumentError(const DocumentError& other) noexcept = default;
DocumentError& DocumentError::operator=(const DocumentError& other) noexcept = default;
DocumentError::~DocumentError() = default;

std::string DocumentError::Problem() const { return {what() + mProblemBegin, mProblemSize}; }

std::string DocumentError::Remedy() const {
    return what() + mProblemBegin + mProblemSize + kBeforeRemedy.size();
}

}  // namespace MADocuments
