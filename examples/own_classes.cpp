// An application brings its own variables, encoders and record sources: here the readings of a
// sensor as they stand in the application's own structure, without copying them into a table.

#include <array>
#include <cstddef>
#include <iostream>
#include <string>
#include <vector>

#include "accredit/accreditation/MAAccreditor.h"
#include "accredit/host/IMCEncoder.h"
#include "accredit/host/IMCVariable.h"
#include "accredit/host/MCMV.h"
#include "accredit/host/MCVarList.h"
#include "accredit/host/MultiPassRecordIter.h"

using MCCommon::MCStatus;
using MCCommon::MultiPassRecordIter;
using MCCommon::Record;
using MCMTD_NAMESPACE::IMCEncoder;
using MCMTD_NAMESPACE::IMCVariable;
using MCMTD_NAMESPACE::MCVarList;

namespace {

enum class State { idle, busy, fault };

struct Reading {
    bool valid;
    double temperature;  // in degrees Celsius
    State state;
};

class TemperatureVariable : public IMCVariable {
public:
    int GetMeasureLevel() const override { return MeasureLevelContinuous; }
    std::string GetName() const override { return "temperature"; }
    int GetNumCategories() const override { return 0; }
    VariableRole GetRole() const override { return VariableRoleInput; }
};

class StateVariable : public IMCVariable {
public:
    int GetMeasureLevel() const override { return MeasureLevelNominal; }
    std::string GetName() const override { return "state"; }
    int GetNumCategories() const override { return 3; }
    VariableRole GetRole() const override { return VariableRoleInput; }
};

// The codes are the enumeration's own values.
class StateEncoder : public IMCEncoder {
public:
    int GetValueType() const override { return ValueTypeString; }
    int GetNumCategories() const override { return static_cast<int>(kNames.size()); }
    double EncodeString(const std::string& value) const override {
        for (std::size_t code = 0; code < kNames.size(); ++code) {
            if (value == kNames[code]) return static_cast<double>(code);
        }
        return -1.0;
    }
    double EncodeNumber(double /*value*/) const override { return -1.0; }
    std::string DecodeString(int code) const override {
        return code >= 0 && code < 3 ? kNames[static_cast<std::size_t>(code)] : "";
    }
    double DecodeNumber(int /*code*/) const override { return MCMV::Missing(); }

private:
    static constexpr std::array<const char*, 3> kNames = {"idle", "busy", "fault"};
};

// Shows one reading at a time as a record. The values live in the source until the next fetch.
class ReadingSource : public MultiPassRecordIter {
public:
    explicit ReadingSource(const std::vector<Reading>& readings) : mReadings(readings) {}

    bool HasMoreRecords() override { return mNext < mReadings.size(); }
    const Record* GetNextRecord() override {
        const Reading& reading = mReadings[mNext++];
        mValues = {reading.valid ? reading.temperature : MCMV::Missing(),
                   static_cast<double>(reading.state)};
        return &mRecord;
    }
    int GetErrorState() override { return ErrorStateNone; }
    int Rewind() override {
        mNext = 0;
        return 0;
    }

private:
    const std::vector<Reading>& mReadings;
    std::size_t mNext = 0;
    std::array<double, 2> mValues{};
    Record mRecord{mValues.data(), 2};
};

std::vector<Reading> Simulate(int count, double offset) {
    std::vector<Reading> readings;
    for (int i = 0; i < count; ++i) {
        const double wave = static_cast<double>(i * 37 % 100) / 10.0;
        const State state = i % 10 == 9 ? State::fault : (i % 3 == 0 ? State::idle : State::busy);
        readings.push_back({i % 17 != 0, 40.0 + wave + offset, state});
    }
    return readings;
}

double Accredit(const MADistStats& reference, const MCVarList& list,
                const std::vector<Reading>& readings) {
    ReadingSource source(readings);
    MAAccreditor accreditor(list, source, nullptr);
    MCStatus status =
        accreditor.ComputeDistStats({reference.GetCutPoints(0), reference.GetCutPoints(1)});
    if (status.IsOK()) status = accreditor.ComputeAccreditation(reference, {});
    if (!status.IsOK()) throw status;
    return accreditor.GetAccreditation();
}

}  // namespace

int main() {
    MCVarList list;
    list.Add(TemperatureVariable());
    list.Add(StateVariable(), StateEncoder());
    try {
        const std::vector<Reading> lastYear = Simulate(1000, 0.0);
        ReadingSource source(lastYear);
        const MADistStats reference(new MADistStatsImp(list, source, {}, nullptr));
        std::cout << "this week:   " << Accredit(reference, list, Simulate(250, 0.0)) << '\n'
                  << "overheating: " << Accredit(reference, list, Simulate(250, 3.0)) << '\n';
    } catch (const MCStatus& status) {
        std::cerr << status.GetMessage() << '\n';
        return 1;
    }
    return 0;
}
