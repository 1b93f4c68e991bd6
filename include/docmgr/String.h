// The text type of every interface: UTF-16 code units, as the client's foundation library
// uses. Paths, names, ids and SQL texts cross the interfaces as this type. Text that is not
// valid Unicode (a lone surrogate) is carried as it is.
#pragma once

#include <string>

namespace base {

using String = std::u16string;

}  // namespace base
