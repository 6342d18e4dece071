// The three accessors of the basic services for tests: what a test has put in place, else the stand-in's own.
//
//   ServiceOverride<IBasUtilityFile> file(&recording_file_service);

#pragma once

#include <utility>

#include "common/basic/basic_services.h"

// The service that the accessor gives, and how many times it was asked for one.
template <typename Service>
struct ServiceSlot {
  Service* service = nullptr;
  int accessor_calls = 0;
};

template <typename Service>
inline ServiceSlot<Service> service_slot;

// Puts a service in place as long as it lives, and counts from zero. Not for tests with several threads.
template <typename Service>
class ServiceOverride {
 public:
  explicit ServiceOverride(Service* service) { service_slot<Service> = {service, 0}; }
  ~ServiceOverride() { service_slot<Service> = {}; }
  ServiceOverride(const ServiceOverride&) = delete;
  ServiceOverride& operator=(const ServiceOverride&) = delete;

  int AccessorCalls() const { return service_slot<Service>.accessor_calls; }
};
