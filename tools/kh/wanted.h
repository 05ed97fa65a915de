// What users want to see of a file: paths with a type behind them, "PATH:i", and the values they give.
#ifndef KALV_TOOLS_WANTED_H
#define KALV_TOOLS_WANTED_H

#include "document.h"
#include "output.h"

#include <variant>

namespace tool {

/// A path, and as what its values are read.
struct Wanted {
    enum Type { text, integer, real } type;
    std::string path;
    std::string title; ///< as it was written
};

/// The paths of texts such as "PATH,PATH:i". Throws a Failure (usage) for an empty one.
std::vector<Wanted> parse_wanted(const std::vector<std::string>& texts);

/// A value that was read, or none.
class Value {
public:
    Value() = default;
    /// Throws a Failure (cannot_read) where a text is no number, by the rules by which the library reads.
    Value(const Document& document, const std::string& path, Wanted::Type type, std::string text);

    bool exists() const { return !std::holds_alternative<std::monostate>(value_); }
    /// The value as text; empty where there is none.
    std::string text() const;
    void write(JsonWriter& json) const;

private:
    std::variant<std::monostate, std::string, long, double> value_;
};

/// Reads one value. It need not exist.
Value read_value(Document& document, const std::string& path, Wanted::Type type);

/// The option that takes such paths.
void declare_wanted(Command& command, std::vector<std::string>& texts, const std::string& text);

} // namespace tool

#endif
