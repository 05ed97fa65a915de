// Writes JSON piece by piece: output may be much larger than what should be kept in memory.
#ifndef KALV_TOOLS_JSON_WRITER_H
#define KALV_TOOLS_JSON_WRITER_H

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

/// Appends a text as JSON, with its quotes. Bytes that are no UTF-8 (file names may hold them) are replaced.
void append_json_text(std::string& out, std::string_view text);

/// Appends to a text of its owner, which may take away what is there between two calls.
class JsonWriter {
public:
    /// \param outer how many levels the value is indented
    explicit JsonWriter(std::string& out, std::size_t outer = 0) : out_(out), outer_(outer) {}

    JsonWriter& begin_object() { return begin('{', '}'); }
    JsonWriter& begin_array() { return begin('[', ']'); }
    /// An object or array on one line.
    JsonWriter& begin_short_object() { return begin('{', '}', true); }
    JsonWriter& begin_short_array() { return begin('[', ']', true); }
    /// Ends the object or array that began last.
    JsonWriter& end();

    JsonWriter& key(std::string_view name);
    JsonWriter& value(std::string_view text);
    JsonWriter& value(const char* text) { return value(std::string_view(text)); }
    JsonWriter& value(const std::string& text) { return value(std::string_view(text)); }
    JsonWriter& value(long number) { return literal(std::to_string(number)); }
    JsonWriter& value(std::size_t number) { return literal(std::to_string(number)); }
    /// What is no number in JSON, such as an infinity, becomes null.
    JsonWriter& value(double number);
    JsonWriter& value(bool flag) { return literal(flag ? "true" : "false"); }
    JsonWriter& null() { return literal("null"); }
    template <class Value>
    JsonWriter& value(const std::optional<Value>& optional)
    {
        return optional ? value(*optional) : null();
    }
    template <class Value>
    JsonWriter& member(std::string_view name, const Value& content)
    {
        return key(name).value(content);
    }

    std::size_t depth() const { return levels_.size(); }

private:
    struct Level {
        char closing;
        bool on_one_line;
        bool empty;
    };

    JsonWriter& begin(char opening, char closing, bool on_one_line = false);
    JsonWriter& literal(std::string_view text);
    void begin_value();
    void new_line();

    std::string& out_;
    std::size_t outer_;
    std::vector<Level> levels_;
    bool after_key_ = false;
};

} // namespace tool

#endif
