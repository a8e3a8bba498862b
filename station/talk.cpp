#include "station/talk.h"

namespace ampdesk {

template class Mailbox<Act>;
template class Mailbox<Notice>;

}  // namespace ampdesk
