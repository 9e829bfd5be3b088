#pragma once

/// The choices and states of connections and recordsets; the numbers are those of the record-set
/// model.
namespace ado {

/// What a recordset sees of the work of others, while it is open: of other stations, and of whoever
/// changes the file past its connection. All of them walk both ways, but ForwardOnly over a join or
/// a computed result: of many rows it keeps those only that it hasn't come to.
///
/// Over one table:
///                                a row added        changed                   deleted
///   a whole table, by its key    is there           shows as it is now        isn't there any more
///   a list, Dynamic              is there           shows as it is now, at    isn't there any more
///                                                   its place, or leaves the
///                                                   list
///   a list, the other types      after Requery()    shows as it is now        Error{conflict} when
///                                                                             it is read
///
/// A list is what has a condition, a filter or an order other than the key's. "Is there" is meant
/// for Find(), every move, setFilter(), setSort() and RecordCount(): whichever comes first after
/// a change takes it in. The place stays with its row; when that has been deleted, MoveNext()
/// goes to the row after it and MovePrevious() to the one before. Taking it in costs a list
/// one new reading of its rows, and nothing when nobody else has written.
///
/// Of a join all types see the rows that there were when they were fetched, with their fields as
/// they are now (Error{conflict} when one has been deleted); a computed result is as it was when
/// fetched. Requery() shows them anew.
enum class CursorType : int { ForwardOnly = 0, Keyset = 1, Dynamic = 2, Static = 3 };

/// Whether rows may be changed. Optimistic: a row isn't held while it is edited, and Update()
/// fails if another changed it meanwhile. (The model's other kinds of locking are used by no
/// window.)
enum class LockType : int { ReadOnly = 1, Optimistic = 3 };

/// What the text given to Open() is. Unknown (the model's -1): a table's name or a statement.
enum class CommandType : int { Unknown = -1, Text = 1, Table = 2 };

enum class State : int { Closed = 0, Open = 1 };
enum class EditMode : int { None = 0, InProgress = 1, Add = 2 };

} // namespace ado
