#include "desk/toolkit/ModKeys.h"

#include <QGuiApplication>

#include "host/toolkit/UI_KeyboardEvent.h"

namespace desk {
namespace {

unsigned sImplied = 0;

}  // namespace

ImpliedModKeys::ImpliedModKeys(unsigned modKeys) : mBefore(sImplied) {
    sImplied |= modKeys;
}

ImpliedModKeys::~ImpliedModKeys() {
    sImplied = mBefore;
}

}  // namespace desk

namespace host {

unsigned GetCurrentModKeys() {
    const bool isAlt = QGuiApplication::keyboardModifiers() & Qt::AltModifier;
    return (isAlt ? kModKey_Alt : 0u) | desk::sImplied;
}

}  // namespace host
