#include "host/Host.h"

namespace tellurix {

bool Message::Offers(Reply reply) const {
  switch (Buttons()) {
    case OkCancel:
      return reply == Reply::Ok || reply == Reply::Cancel;
    case YesNoCancel:
      return reply != Reply::Ok;
    case YesNo:
      return reply == Reply::Yes || reply == Reply::No;
    default:
      return reply == Reply::Ok;
  }
}

}  // namespace tellurix
