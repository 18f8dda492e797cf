#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace app {

/// Writes a JSON document piece by piece, indented by two blanks a level. The caller puts a Key
/// before every value of an object and ends what it begins. Nothing here allocates memory when it
/// is destroyed.
class JsonWriter {
public:
    void BeginObject() { Begin('{'); }
    void EndObject() { End('}'); }
    void BeginArray() { Begin('['); }
    void EndArray() { End(']'); }
    void Key(std::string_view name);

    /// See JsonText.
    void String(std::string_view text);
    void Number(int number);
    void Number(std::uint64_t number);
    /// With the fewest digits that give the same double back, and a point or an exponent: 1.0. null
    /// for what is not finite, which JSON cannot write.
    void Number(double number);
    /// null if there is none.
    void Number(const std::optional<double>& number);
    void Null();

    /// What has been written.
    const std::string& Text() const { return mText; }

private:
    void Begin(char bracket);
    void End(char bracket);
    void BeginValue();
    void BreakLine();

    std::string mText;
    std::size_t mLevel = 0;
    bool mIsEmpty = true;  // the innermost object or array, so far
    bool mAfterKey = false;
};

}  // namespace app
