// Writes a manifest of either generation. The output is deterministic.

#pragma once

#include <memory>
#include <string>

#include "manifest.h"
#include "owners.h"

class ManifestWriter {
 public:
  virtual ~ManifestWriter() = default;

  // `target` is the target of a link. Both functions throw Failure when writing fails.
  virtual void Add(const Entry& entry, const std::string& target) = 0;
  virtual void Finish() = 0;
};

// A new manifest in the folder `root`, which ends with "/".
std::unique_ptr<ManifestWriter> WriteManifestDb(const std::string& root);
std::unique_ptr<ManifestWriter> WriteManifestMbdb(const std::string& root);
