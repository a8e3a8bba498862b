// How a transfer comes about: which file, and whether it may be replaced.
#pragma once

#include <memory>

#include "tools/nvram_transfer.h"

namespace ampdesk {

// Asks for the file and opens it. A file to be set is asked for until it exists, one to be read into
// until it is new or the operator says that it may be replaced. Nothing when the operator cancels a
// file dialog, or when the file cannot be opened, which is told.
std::unique_ptr<NvramTransfer> start_nvram_transfer(NvramTransfer::Mode mode, std::int16_t unit_address,
                                                    BusLink& bus, Operator& person);

}  // namespace ampdesk
