// An opened producer-library file (a transport-layer driver, "CTI"), which
// gives the one system it drives.
#ifndef OXEL_CORE_PRODUCER_LIBRARY_H
#define OXEL_CORE_PRODUCER_LIBRARY_H

#include <memory>
#include <string>

#include "oxel/core/class_creator.h"
#include "oxel/core/init_once.h"
#include "oxel/oxel_c.h"

namespace oxel::core {

class System;
class SystemDescriptor;

class ProducerLibrary : public InitOnce, public std::enable_shared_from_this<ProducerLibrary> {
 public:
  // Opens the file at `path`.
  static std::shared_ptr<ProducerLibrary> Open(const std::string& path);

  ProducerLibrary(CreationKey, OXEL_PRODUCER_LIBRARY handle, std::string path);
  ~ProducerLibrary() override;

  std::string Path() const { return path_; }
  std::string Vendor() const;
  // The library's system, opened on first use; the same object every time.
  std::shared_ptr<oxel::core::System> System();

 protected:
  void InitializeOnce() override;

 private:
  const OXEL_PRODUCER_LIBRARY handle_;
  const std::string path_;
  std::shared_ptr<SystemDescriptor> systemDescriptor_;
  std::shared_ptr<oxel::core::System> system_;
};

}  // namespace oxel::core

#endif  // OXEL_CORE_PRODUCER_LIBRARY_H
