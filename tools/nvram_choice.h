// Which file a transfer reads or writes: the operator is asked until it will do.
#pragma once

#include <optional>
#include <string>

#include "platform/dialogs.h"
#include "tools/nvram_transfer.h"

namespace ampdesk {

// A file to be set is asked for until it exists, one to be read into until it is new or the operator says
// that it may be replaced. Nothing when the operator cancels a file dialog.
std::optional<std::string> choose_nvram_file(NvramTransfer::Mode mode, Dialogs& person);

}  // namespace ampdesk
