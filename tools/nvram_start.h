// How a transfer comes about: the window asks which file, and whether it may be replaced; the transfer is
// made of the answer.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/dialogs.h"
#include "tools/nvram_transfer.h"

namespace ampdesk {

// A file to be set is asked for until it exists, one to be read into until it is new or the operator says
// that it may be replaced. Nothing when the operator cancels a file dialog.
std::optional<std::string> choose_nvram_file(NvramTransfer::Mode mode, Dialogs& person);

// Nothing when the file cannot be opened, which is told.
std::unique_ptr<NvramTransfer> make_nvram_transfer(NvramTransfer::Mode mode, const std::string& path,
                                                   std::int16_t unit_address, BusLink& bus, Operator& person);

}  // namespace ampdesk
