// The accessors of the basic services, for tests: each returns a test's replacement, or else the stand-in's
// service.
//
//   ServiceOverride<IBasUtilityFile> file(&recording_file_service);

#pragma once

#include "common/basic/basic_services.h"

// A test's replacement, and how often the accessor returned it.
template <typename Service>
inline Service* service_in_place = nullptr;
template <typename Service>
inline int accessor_calls = 0;

// Replaces a service while it lives, and counts from zero. Not thread-safe.
template <typename Service>
struct ServiceOverride {
  explicit ServiceOverride(Service* service) { service_in_place<Service> = service; }
  ~ServiceOverride() { service_in_place<Service> = nullptr, accessor_calls<Service> = 0; }
  ServiceOverride(const ServiceOverride&) = delete;
  int AccessorCalls() const { return accessor_calls<Service>; }
};
