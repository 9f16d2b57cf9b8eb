#include "tests/support/RecordingDesktop.h"

#include "desk/core/Services.h"

RecordingDesktop::RecordingDesktop() : mBefore(desk::GetServices().mDesktop) {
    desk::GetServices().mDesktop = this;
}

RecordingDesktop::~RecordingDesktop() {
    desk::GetServices().mDesktop = mBefore;
}
