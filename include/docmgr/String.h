// The text type of every interface: UTF-16 code units, as the client's foundation library
// uses. Paths, names, ids and SQL texts cross the interfaces as this type. Text that is not
// valid Unicode (a lone surrogate) is carried as it is.
#pragma once

#include <string>

namespace base {

using String = std::u16string;

// UTF-16 <-> WTF-8 (UTF-8 that also writes a lone surrogate in its 3-byte form), so that
// every String, valid Unicode or not, round-trips through the databases unchanged.
// FromUtf8 reads valid pairs as usual and a 3-byte surrogate as that one unit (a pair
// written as two 3-byte forms by another program reads as that pair). Bytes that
// are not WTF-8 at all cannot have come from ToUtf8 (a foreign database, a system
// message): each such byte reads as U+FFFD, so nothing fails and nothing crashes, but
// those bytes are not recovered. Defined in the host library.
std::string ToUtf8(const String& text);
String FromUtf8(const std::string& text);

}  // namespace base
