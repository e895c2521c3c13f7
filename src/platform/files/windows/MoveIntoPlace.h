// The last step of every file that appears whole or not at all.
#pragma once

#include <string>

namespace quillmoor {

/// Gives the file at `from` the name `to`, replacing what stands there. Virus scanners and indexers hold a
/// file that was just written for some moments; the move is tried again for half a second then, without a
/// turn of the pump. `flush`: not before it has reached the disk. False when it has failed, with the last
/// error set; both files are then as before.
bool MoveIntoPlace(const std::wstring& from, const std::wstring& to, bool flush = false);

}  // namespace quillmoor
