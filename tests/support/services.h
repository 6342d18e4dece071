// The three accessors of the basic services for tests: what a test has put in place, else the stand-in's own.
//
//   ServiceOverride<IBasUtilityFile> file(&recording_file_service);

#pragma once

#include "common/basic/basic_services.h"

// The service that a test has put in place, and how many times the accessor gave it.
template <typename Service>
inline Service* service_in_place = nullptr;
template <typename Service>
inline int accessor_calls = 0;

// Puts a service in place as long as it lives, and counts from zero. Not for tests with several threads.
template <typename Service>
struct ServiceOverride {
  explicit ServiceOverride(Service* service) { service_in_place<Service> = service; }
  ~ServiceOverride() { service_in_place<Service> = nullptr, accessor_calls<Service> = 0; }
  ServiceOverride(const ServiceOverride&) = delete;
  int AccessorCalls() const { return accessor_calls<Service>; }
};
