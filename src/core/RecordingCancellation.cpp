#include "RecordingCancellation.h"

using namespace Qt::StringLiterals;

namespace {

const auto domain = u"Vexet.Cancellation"_s;

} // namespace

Error RecordingCancellation::error()
{
    return Error(domain, 1, u"Kayıt iptal edildi."_s);
}

bool RecordingCancellation::matches(const Error& error)
{
    return error.domain() == domain;
}
