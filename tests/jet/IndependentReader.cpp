#include "jet/IndependentReader.h"

#include "support/MdbTools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <map>

using namespace jet;

namespace {

using Record = std::vector<std::string>;

std::string printed(const char* format, double value) {
    char text[64];
    const int length = std::snprintf(text, sizeof text, format, value);
    return {text, static_cast<std::size_t>(length)};
}

/// Few enough digits for both sides to agree on them.
const char* digitsOf(ColumnType type) { return type == ColumnType::single ? "%.5g" : "%.13g"; }

std::string hex(std::span<const std::byte> bytes) {
    std::string text;
    for (const std::byte b : bytes)
        text += "0123456789ABCDEF"[std::to_integer<unsigned>(b) >> 4],
            text += "0123456789ABCDEF"[std::to_integer<unsigned>(b) & 15];
    return text;
}

/// A field of ours in the form of the reader.
struct Writer {
    ColumnType type;

    std::string operator()(std::monostate) const { return {}; }
    std::string operator()(bool value) const { return value ? "1" : "0"; }
    std::string operator()(std::int64_t value) const { return std::to_string(value); }
    std::string operator()(const std::string& value) const { return value; }
    std::string operator()(const Guid& value) const {
        std::string text = value.text();
        text.erase(24, 1); // the reader leaves the last dash out
        return text;
    }
    std::string operator()(const Numeric& value) const { return value.text(); }
    std::string operator()(const Bytes& value) const { return hex(value); }
    std::string operator()(double value) const { return printed(digitsOf(type), value); }
    std::string operator()(Date value) const {
        const CivilTime t = value.civil();
        char text[64];
        (void)std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d", t.year, t.month,
                            t.day, t.hour, t.minute, t.second);
        return text;
    }
    std::string operator()(Currency value) const {
        const std::int64_t whole = value.tenThousandths / 10000;
        const std::int64_t part = std::abs(value.tenThousandths % 10000);
        char text[64];
        (void)std::snprintf(text, sizeof text, "%s%lld.%04lld",
                            value.tenThousandths < 0 && whole == 0 ? "-" : "",
                            static_cast<long long>(whole), static_cast<long long>(part));
        return text;
    }
};

/// The reader's field in a form that ours can be compared with.
std::string settled(const std::string& field, ColumnType type) {
    if (field.empty())
        return field;
    if (type == ColumnType::single || type == ColumnType::real)
        return printed(digitsOf(type), std::strtod(field.c_str(), nullptr));
    if (type != ColumnType::guid)
        return field;
    std::string text; // of a GUID it shows the letters as bytes
    for (std::size_t i = 0; i + 1 < field.size(); i += 2)
        text += static_cast<char>(std::toupper(std::stoi(field.substr(i, 2), nullptr, 16)));
    return text;
}

/// Values that the reader is known to show wrongly: binary it cuts at a zero byte, days before the
/// first, text with zero characters or with bytes that the code page leaves undefined, types it
/// doesn't know.
bool isBeyondReader(const Column& column, const Value& value) {
    if (const auto* bytes = std::get_if<Bytes>(&value))
        return column.type != ColumnType::ole &&
               (column.type != ColumnType::binary || std::ranges::count(*bytes, std::byte{0}) > 0);
    if (const auto* date = std::get_if<Date>(&value))
        return date->days < 0;
    if (const auto* text = std::get_if<std::string>(&value))
        for (std::size_t i = 0; i < text->size(); ++i) {
            const auto c = static_cast<unsigned char>((*text)[i]);
            if (c == 0 || (c == 0xC2 && static_cast<unsigned char>((*text)[i + 1]) < 0xA0))
                return true;
        }
    return false;
}

std::string shown(const Record& record) {
    std::string text;
    for (const std::string& field : record)
        text += (text.empty() ? "" : " | ") + field.substr(0, 60);
    return text;
}

void expectSameTable(Table& table, std::vector<Record> theirs) {
    SCOPED_TRACE(table.name());
    ASSERT_FALSE(theirs.empty()) << "the reader shows nothing";
    std::map<std::string, std::size_t> theirPlaces;
    for (std::size_t i = 0; i < theirs[0].size(); ++i)
        theirPlaces[theirs[0][i]] = i;
    ASSERT_EQ(theirPlaces.size(), table.columns().size());
    theirs.erase(theirs.begin());

    std::vector<Record> ours;
    std::vector<bool> leftOut(table.columns().size());
    RowCursor row = table.scan();
    for (bool there = row.first(); there; there = row.next()) {
        Record& record = ours.emplace_back();
        for (std::size_t i = 0; i < table.columns().size(); ++i) {
            const Value value = row.row().value(i);
            leftOut[i] = leftOut[i] || isBeyondReader(table.columns()[i], value);
            record.push_back(std::visit(Writer{table.columns()[i].type}, value));
        }
    }
    std::vector<Record> expected;
    for (const Record& record : theirs) {
        Record& mine = expected.emplace_back();
        for (const Column& column : table.columns()) {
            const auto place = theirPlaces.find(column.name);
            ASSERT_NE(place, theirPlaces.end()) << column.name;
            ASSERT_LT(place->second, record.size());
            mine.push_back(settled(record[place->second], column.type));
        }
    }
    for (std::vector<Record>* records : {&ours, &expected})
        for (Record& record : *records)
            for (std::size_t i = 0; i < record.size(); ++i)
                if (leftOut[i])
                    record[i].clear();
    ASSERT_EQ(ours.size(), expected.size());
    std::ranges::sort(ours);
    std::ranges::sort(expected);
    for (std::size_t i = 0; i < ours.size(); ++i)
        if (ours[i] != expected[i]) {
            ADD_FAILURE() << "ours:   " << shown(ours[i]) << "\ntheirs: " << shown(expected[i]);
            return;
        }
}

} // namespace

void expectSameAsIndependentReader(const std::filesystem::path& file,
                                   const Database::Options& options,
                                   const std::string& environment) {
    SCOPED_TRACE(file.filename().string());
    Database::Options reading = options;
    reading.readOnly = true;
    Database database(file, reading);
    for (const std::string& name : database.allTableNames())
        expectSameTable(database.table(name), exportedByMdbTools(file, name, environment));
}
