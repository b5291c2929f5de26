// A file of rows that a further run continues.
#pragma once

#include <string>
#include <string_view>

namespace host {

// Cuts off what follows the file's last whole row, and says so: a run that was killed, or found the disk
// full, leaves such a piece, to which the next row would be glued. `descriptor` can write; `form` is the
// rows', one of run's --output. Throws Failure, also where the piece is no row's begin and so of somebody
// else.
void cutTornRow(int descriptor, const std::string& name, std::string_view form);

}  // namespace host
