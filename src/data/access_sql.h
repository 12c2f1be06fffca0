// The Access SQL the bridge writes, rewritten for SQLite.
//
// Statements are written once, in Access SQL, exactly as the host's support staff see
// them, and sent unchanged to the Access driver. SQLite understands most of that text;
// the rest is rewritten here by a tokenizer that knows string literals ('...' and
// "..."), date literals (#...#), bracketed names ([...]) and words, so that nothing
// inside a literal or a bracketed name is ever touched.
#pragma once

#include <ctime>
#include <string>
#include <string_view>

namespace sv140 {

/// Rewrites one Access SQL statement for SQLite. `aujourdhui` is the run's local date,
/// used for Date(). Text that needs no rewriting is kept byte for byte.
///   #m-d-yyyy h:n:s#, #m/d/yyyy# ...  -> 'YYYY-MM-DD HH:MM:SS'
///   True / False                      -> -1 / 0
///   "text"                            -> 'text'  (quotes re-escaped)
///   Date()                            -> today at midnight, in the storage form
///   Val(x)                            -> the numeric value of x
///   @@IDENTITY                        -> last_insert_rowid()
///   DELETE DISTINCTROW t.c FROM t, DELETE t.*, t.c FROM t, DELETE * FROM t,
///   DELETE t.c FROM t                 -> DELETE FROM t
///   UPDATE t SET t.c = ...            -> UPDATE t SET c = ...
std::string Traduire_Access_SQL(std::string_view access_sql, const std::tm& aujourdhui);

}  // namespace sv140
