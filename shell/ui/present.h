// Puts before the person what the station has to say to him.
#pragma once

#include "platform/operator.h"
#include "station/person_talk.h"

namespace ampdesk {

void present(const PersonNotice& notice, Operator& person);

}  // namespace ampdesk
