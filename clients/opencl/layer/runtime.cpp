#include "clients/opencl/layer/runtime.h"

#include <dlfcn.h>
#include <stdlib.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <stdexcept>

namespace zorp::opencl {
namespace {

void check(cl_int status, const char* what) {
  if (status != CL_SUCCESS)
    throw std::runtime_error(std::string(what) + ": status " + std::to_string(status));
}

constexpr std::size_t kEntries = sizeof(Entries) / sizeof(void*);

}  // namespace

Entries layered(const Entries& plain, const std::string& layer) {
  void* handle = dlopen(layer.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (!handle) throw std::runtime_error(dlerror());
  const auto start = reinterpret_cast<pfn_clInitLayer>(dlsym(handle, "clInitLayer"));
  const Entries* replaced = nullptr;
  cl_uint count = 0;
  check(start(kEntries, &plain, &count, &replaced), "clInitLayer");
  void* entries[kEntries];
  std::memcpy(entries, &plain, sizeof plain);
  for (cl_uint i = 0; i < count; ++i) {
    void* entry;
    std::memcpy(&entry, reinterpret_cast<const char*>(replaced) + i * sizeof entry, sizeof entry);
    if (entry) entries[i] = entry;
  }
  Entries result;
  std::memcpy(&result, entries, sizeof result);
  return result;
}

Runtime::Runtime(const std::string& layer) {
  scratch_ = (std::filesystem::temp_directory_path() / "zorp_opencl_XXXXXX").string();
  if (!mkdtemp(scratch_.data())) throw std::runtime_error(scratch_ + " can't be made");
  setenv("POCL_CACHE_DIR", scratch_.c_str(), 1);
  // One thread, so that times are those of one.
  setenv("POCL_MAX_PTHREAD_COUNT", "1", 1);

  cl_uint count = 0;
  if (clGetPlatformIDs(0, nullptr, &count) != CL_SUCCESS) count = 0;
  std::vector<cl_platform_id> platforms(count);
  if (count) clGetPlatformIDs(count, platforms.data(), nullptr);
  const auto is_pocl = [](cl_platform_id platform) {
    char name[64] = "";
    clGetPlatformInfo(platform, CL_PLATFORM_NAME, sizeof name, name, nullptr);
    return std::string(name) == "Portable Computing Language";
  };
  const auto platform = std::find_if(platforms.begin(), platforms.end(), is_pocl);
  if (platform == platforms.end()) throw std::runtime_error("there is no PoCL here");

  // Behind the loader, an object begins with the address of its runtime's functions.
  const Entries* entries;
  std::memcpy(&entries, *platform, sizeof entries);
  plain_ = *entries;
  layered_ = layered(plain_, layer);

  check(plain_.clGetDeviceIDs(*platform, CL_DEVICE_TYPE_CPU, 1, &device_, nullptr), "a device");
  cl_int status;
  context_ = plain_.clCreateContext(nullptr, 1, &device_, nullptr, nullptr, &status);
  check(status, "a context");
  queue_ = plain_.clCreateCommandQueue(context_, device_, 0, &status);
  check(status, "a queue");
}

Runtime::~Runtime() {
  plain_.clReleaseCommandQueue(queue_);
  plain_.clReleaseContext(context_);
  std::error_code ignored;
  std::filesystem::remove_all(scratch_, ignored);
}

Program::Program(const Runtime& runtime, const Entries& entries, const std::string& source,
                 const std::string& options)
    : runtime_(runtime), entries_(entries) {
  const char* text = source.c_str();
  program_ = entries_.clCreateProgramWithSource(runtime.context(), 1, &text, nullptr, &status_);
  if (status_ != CL_SUCCESS) return;
  const cl_device_id device = runtime.device();
  status_ = entries_.clBuildProgram(program_, 1, &device, options.c_str(), nullptr, nullptr);
}

Program::~Program() {
  if (program_) entries_.clReleaseProgram(program_);
}

std::string Program::log() const {
  std::size_t size = 0;
  entries_.clGetProgramBuildInfo(program_, runtime_.device(), CL_PROGRAM_BUILD_LOG, 0, nullptr,
                                 &size);
  std::string text(size, '\0');
  entries_.clGetProgramBuildInfo(program_, runtime_.device(), CL_PROGRAM_BUILD_LOG, size,
                                 text.data(), nullptr);
  return text.c_str();
}

Launch::Launch(const Runtime& runtime, const Program& program, const std::string& kernel,
               const std::vector<Buffer>& buffers)
    : runtime_(runtime), buffers_(buffers) {
  const Entries& entries = runtime.without_layer();
  if (program.status() != CL_SUCCESS) throw std::runtime_error(program.log());
  cl_int status;
  kernel_ = entries.clCreateKernel(program.get(), kernel.c_str(), &status);
  check(status, kernel.c_str());
  for (const Buffer& buffer : buffers) {
    memory_.push_back(entries.clCreateBuffer(runtime.context(), CL_MEM_COPY_HOST_PTR, buffer.bytes,
                                             buffer.data, &status));
    check(status, "a buffer");
    check(entries.clSetKernelArg(kernel_, cl_uint(memory_.size() - 1), sizeof(cl_mem),
                                 &memory_.back()),
          "an operand");
  }
}

Launch::~Launch() {
  for (cl_mem memory : memory_) runtime_.without_layer().clReleaseMemObject(memory);
  runtime_.without_layer().clReleaseKernel(kernel_);
}

void Launch::operator()(std::size_t groups, std::size_t group_size) const {
  const std::size_t size = groups * group_size;
  check(runtime_.without_layer().clEnqueueNDRangeKernel(runtime_.queue(), kernel_, 1, nullptr,
                                                        &size, &group_size, 0, nullptr, nullptr),
        "a launch");
  check(runtime_.without_layer().clFinish(runtime_.queue()), "a launch");
}

void Launch::read() const {
  for (std::size_t i = 0; i < memory_.size(); ++i)
    check(runtime_.without_layer().clEnqueueReadBuffer(runtime_.queue(), memory_[i], CL_TRUE, 0,
                                                       buffers_[i].bytes, buffers_[i].data, 0,
                                                       nullptr, nullptr),
          "a result");
}

}  // namespace zorp::opencl
