// PoCL on this processor, with and without the layer in one process: for tests and measurements.
#pragma once

#include <CL/cl_layer.h>

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

namespace zorp::opencl {

/// The functions of a runtime, as a program that the loader serves sees them.
using Entries = cl_icd_dispatch;

/// The functions with those that the layer replaces. `layer` is its file, which keeps one state for
/// as often as it is loaded, and reads the environment now.
Entries layered(const Entries& plain, const std::string& layer);

/// A context on the device, with a queue. What PoCL compiles it keeps in a scratch folder.
class Runtime {
 public:
  /// Throws if there is no PoCL.
  explicit Runtime(const std::string& layer);
  ~Runtime();
  Runtime(const Runtime&) = delete;

  const Entries& without_layer() const { return plain_; }
  const Entries& with_layer() const { return layered_; }
  cl_context context() const { return context_; }
  cl_device_id device() const { return device_; }
  cl_command_queue queue() const { return queue_; }

 private:
  std::string scratch_;
  Entries plain_, layered_;
  cl_device_id device_;
  cl_context context_;
  cl_command_queue queue_;
};

/// A program as it came out of the compiler.
class Program {
 public:
  Program(const Runtime& runtime, const Entries& entries, const std::string& source,
          const std::string& options = "");
  /// Takes over one that was built.
  Program(const Runtime& runtime, const Entries& entries, cl_program program)
      : runtime_(runtime), entries_(entries), program_(program), status_(CL_SUCCESS) {}
  ~Program();
  Program(const Program&) = delete;

  cl_int status() const { return status_; }
  std::string log() const;
  cl_program get() const { return program_; }

 private:
  const Runtime& runtime_;
  const Entries& entries_;
  cl_program program_ = nullptr;
  cl_int status_;
};

/// A kernel with buffers for its operands.
class Launch {
 public:
  struct Buffer {
    void* data;  // is copied to the device now, and back by read()
    std::size_t bytes;
  };
  Launch(const Runtime& runtime, const Program& program, const std::string& kernel,
         const std::vector<Buffer>& buffers);
  ~Launch();
  Launch(const Launch&) = delete;

  /// Runs groups of so many work-items, and waits.
  void operator()(std::size_t groups, std::size_t group_size) const;
  void read() const;

 private:
  const Runtime& runtime_;
  cl_kernel kernel_;
  std::vector<Buffer> buffers_;
  std::vector<cl_mem> memory_;
};

}  // namespace zorp::opencl
