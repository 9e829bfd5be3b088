#pragma once

#include "jet/TableDefinition.h"

/// The bytes that stand for a row in an index, such that comparing them as plain bytes gives the
/// order of the index. A row's key is that of its index columns one behind the other; each begins
/// with a flag byte (null or not), and a descending one has its value bytes complemented. A call
/// that throws may leave part of a key behind.
namespace jet {

/// Appends the key of `value`, null included.
/// @throws Error{misuse} if `value` isn't of the type that the column reads as, if a yes/no is
/// null, or if the order of a text column isn't known; Error{outOfRange} if it doesn't fit the
/// column (see also TextCodec::encode); Error{unsupported} for a type that can't be indexed.
void appendKey(Bytes& key, const Column& column, bool ascending, const Value& value);

/// Appends the key of a value that isn't null, from the bytes in which its row stores it (a memo's
/// are its text, wherever that lies). The same bytes as appendKey() gives for the value read.
/// @throws Error{corrupt} if `stored` hasn't the size of the type; else as appendKey() does.
void appendStoredKey(Bytes& key, const Column& column, bool ascending,
                     std::span<const std::byte> stored);

/// Appends the key of a null.
void appendNullKey(Bytes& key, bool ascending);

/// Appends the key of a yes/no, which the row stores as a bit and not in bytes.
void appendBooleanKey(Bytes& key, bool ascending, bool value);

} // namespace jet
