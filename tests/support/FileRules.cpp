#include "support/FileRules.h"

#include "jet/page/ByteView.h"
#include "jet/text/TextCodec.h"

namespace {

template <class T>
void append(jet::Bytes& bytes, T value) {
    bytes.resize(bytes.size() + sizeof value);
    jet::store<T>(bytes.data() + bytes.size() - sizeof value, value);
}

void append(jet::Bytes& bytes, const jet::Bytes& more) {
    bytes.insert(bytes.end(), more.begin(), more.end());
}

/// `content` behind its length (that includes itself) and, in a block, its kind.
template <class Length>
void appendSized(jet::Bytes& bytes, const jet::Bytes& content) {
    append<Length>(bytes, static_cast<Length>(content.size() + sizeof(Length)));
    append(bytes, content);
}

jet::Bytes sizedName(const jet::TextCodec& codec, const std::string& name) {
    const jet::Bytes text = codec.encode(name, false, false);
    jet::Bytes bytes;
    append<std::uint16_t>(bytes, static_cast<std::uint16_t>(text.size()));
    append(bytes, text);
    return bytes;
}

} // namespace

jet::Bytes propertyBytes(jet::Version version, const std::vector<FileRule>& rules) {
    const jet::TextCodec codec(version);
    const std::vector<std::string> names{"Required", "AllowZeroLength", "DefaultValue",
                                         "ValidationRule", "ValidationText"};
    jet::Bytes bytes;
    for (const char c : version == jet::Version::jet3 ? "KKD" : "MR2") // its final zero too
        append<std::uint8_t>(bytes, static_cast<std::uint8_t>(c));
    jet::Bytes list;
    append<std::uint16_t>(list, 0x80);
    for (const std::string& name : names)
        append(list, sizedName(codec, name));
    appendSized<std::uint32_t>(bytes, list);

    for (const FileRule& rule : rules) {
        jet::Bytes block;
        append<std::uint16_t>(block, rule.column.empty() ? 0 : 1);
        appendSized<std::uint32_t>(block, sizedName(codec, rule.column));
        const auto value = [&](std::uint16_t name, jet::ColumnType type, const jet::Bytes& data) {
            jet::Bytes one;
            append<std::uint8_t>(one, 1);
            append<std::uint8_t>(one, static_cast<std::uint8_t>(type));
            append<std::uint16_t>(one, name);
            append<std::uint16_t>(one, static_cast<std::uint16_t>(data.size()));
            append(one, data);
            appendSized<std::uint16_t>(block, one);
        };
        if (rule.required)
            value(0, jet::ColumnType::boolean, {std::byte{*rule.required}});
        if (rule.allowZeroLength)
            value(1, jet::ColumnType::boolean, {std::byte{*rule.allowZeroLength}});
        const std::string* const texts[] = {&rule.defaultValue, &rule.rule, &rule.message};
        for (std::uint16_t i = 0; i < 3; ++i)
            if (!texts[i]->empty())
                value(static_cast<std::uint16_t>(2 + i), jet::ColumnType::memo,
                      codec.encode(*texts[i], false, false));
        appendSized<std::uint32_t>(bytes, block);
    }
    return bytes;
}

void setProperties(jet::Database& database, const std::string& table, const jet::Bytes& bytes) {
    jet::Table& objects = database.table("MSysObjects");
    const auto page = jet::number(database.table(table).definition().page());
    std::optional<jet::RowId> found;
    jet::RowCursor row = objects.scan();
    for (bool there = row.first(); there; there = row.next())
        if (row.row().integer(*objects.findColumn("Id")) == page)
            found = row.id();
    objects.update(found.value(), std::vector<jet::Assignment>{
                                      {*objects.findColumn("LvProp"), bytes}
    });
}

void setRules(jet::Database& database, const std::string& table,
              const std::vector<FileRule>& rules) {
    setProperties(database, table, propertyBytes(database.version(), rules));
}

void addRelationship(jet::Database& database, const FileRelationship& relationship) {
    jet::Table& table = database.table("MSysRelationships");
    for (std::size_t i = 0; i < relationship.childColumns.size(); ++i) {
        const std::pair<const char*, jet::Value> fields[] = {
            {"szRelationship",     relationship.name                                          },
            {"grbit",              relationship.flags                                         },
            {"ccolumn",            static_cast<std::int64_t>(relationship.childColumns.size())},
            {"icolumn",            static_cast<std::int64_t>(i)                               },
            {"szObject",           relationship.child                                         },
            {"szColumn",           relationship.childColumns[i]                               },
            {"szReferencedObject", relationship.parent                                        },
            {"szReferencedColumn", relationship.parentColumns[i]                              }
        };
        std::vector<jet::Assignment> given;
        for (const auto& [name, value] : fields)
            given.push_back({table.findColumn(name).value(), value});
        table.insert(given);
    }
}

jet::RowId enterObject(jet::Database& database, std::int64_t id, const std::string& name,
                       std::int64_t type, std::int64_t parent) {
    jet::Table& objects = database.table("MSysObjects");
    const auto at = [&](const char* column) { return objects.findColumn(column).value(); };
    return objects.insert(std::vector<jet::Assignment>{
        {at("Id"),       id    },
        {at("ParentId"), parent},
        {at("Name"),     name  },
        {at("Type"),     type  }
    });
}
