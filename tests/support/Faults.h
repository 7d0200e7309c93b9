// Faults that a test injects into the calls of the system, by their short names.
#ifndef QBFOUNDATION_TESTS_SUPPORT_FAULTS_H
#define QBFOUNDATION_TESTS_SUPPORT_FAULTS_H

#include "System/Faults.h"

#include <cerrno>

namespace sys = qb::sys;
using sys::Call;
using sys::CallCounter;
using sys::Fault;

#endif
