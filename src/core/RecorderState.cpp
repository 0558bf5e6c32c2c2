#include "RecorderState.h"

using namespace Qt::StringLiterals;

QString recorderStateName(RecorderState state)
{
    switch (state) {
    case RecorderState::Idle:
        return u"idle"_s;
    case RecorderState::Starting:
        return u"starting"_s;
    case RecorderState::Recording:
        return u"recording"_s;
    case RecorderState::Stopping:
        return u"stopping"_s;
    case RecorderState::Saving:
        return u"saving"_s;
    }
    return u"unknown"_s;
}
