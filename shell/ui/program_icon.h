// The program's picture in title bars and task lists, drawn at start.
#pragma once

#include <QIcon>

namespace ampdesk {

QIcon program_icon();

}  // namespace ampdesk
