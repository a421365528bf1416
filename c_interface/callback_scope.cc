#include "callback_scope.h"

namespace {

thread_local int depth = 0;

}  // namespace

CallbackScope::CallbackScope() { ++depth; }

CallbackScope::~CallbackScope() { --depth; }

bool CallbackScope::IsInside() { return depth != 0; }
