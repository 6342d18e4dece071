#include <bit>

#include "basic/services.h"

namespace {

class SysService final : public IBasUtilitySys {
 public:
  bool IsLittleEndian() override { return std::endian::native == std::endian::little; }
};

constinit SysService service;

}  // namespace

IBasUtilitySys* Basic::SysService() {
  return &service;
}
