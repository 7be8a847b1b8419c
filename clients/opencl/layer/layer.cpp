// A layer for the loader of OpenCL runtimes: programs run unchanged, and their built-ins are the
// library's kernels.
//
//   OPENCL_LAYERS=/path/libzorp_z1_opencl_layer.so program
//
// The layer puts definitions of built-ins in front of a program's source, as inline assembly that
// calls kernels, and loads the library so that the compiled program finds them. Of the loader's
// functions it replaces the one that makes programs of source, and those that would show what was
// put in front. Variables of the environment:
//
//   ZORP_Z1_OPENCL=all|none   the kernels everywhere, nowhere; else where they are faster than the
//                             runtime's own
//   ZORP_Z1_OPENCL_LOG=1      tell on stderr what the layer does
#include <CL/cl_layer.h>
#include <dlfcn.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "clients/opencl/layer/header_text.h"

namespace zorp::opencl {
namespace {

cl_icd_dispatch next_entries;   // what the layer calls
cl_icd_dispatch layer_entries;  // what it replaces; null elsewhere
std::string header;
bool logs = false;

[[gnu::format(printf, 1, 2)]] void log(const char* format, ...) {
  if (!logs) return;
  va_list arguments;
  va_start(arguments, format);
  std::fputs("zorp_z1: ", stderr);
  std::vfprintf(stderr, format, arguments);
  std::fputc('\n', stderr);
  va_end(arguments);
}

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value ? value : "";
}

bool processor_has_avx512() {
  __builtin_cpu_init();
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
         __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl") &&
         __builtin_cpu_supports("avx512vbmi2") && __builtin_cpu_supports("fma") &&
         __builtin_cpu_supports("f16c");
}

/// Text that a query of the runtime gives: query(size, buffer, size returned).
template <class Query>
std::string text_of(Query query) {
  std::size_t size = 0;
  if (query(0, nullptr, &size) != CL_SUCCESS || size == 0) return "";
  std::string text(size, '\0');
  if (query(size, text.data(), nullptr) != CL_SUCCESS) return "";
  text.resize(size - 1);
  return text;
}

/// Whether the device runs programs in this process, compiled by a compiler that takes the
/// header's assembly: one of PoCL's for the processor itself.
bool is_own_processor(cl_device_id device) {
  cl_device_type type = 0;
  cl_platform_id platform = nullptr;
  if (next_entries.clGetDeviceInfo(device, CL_DEVICE_TYPE, sizeof type, &type, nullptr) ||
      next_entries.clGetDeviceInfo(device, CL_DEVICE_PLATFORM, sizeof platform, &platform, nullptr))
    return false;
  const std::string name = text_of(
      [&](auto... out) { return next_entries.clGetDeviceInfo(device, CL_DEVICE_NAME, out...); });
  const std::string runtime = text_of([&](auto... out) {
    return next_entries.clGetPlatformInfo(platform, CL_PLATFORM_NAME, out...);
  });
  const bool is_own = (type & CL_DEVICE_TYPE_CPU) && runtime == "Portable Computing Language" &&
                      (name.starts_with("pthread") || name.starts_with("basic"));
  if (!is_own) log("device '%s' of '%s': left alone", name.c_str(), runtime.c_str());
  return is_own;
}

bool all_own_processor(cl_context context) {
  std::size_t size = 0;
  if (next_entries.clGetContextInfo(context, CL_CONTEXT_DEVICES, 0, nullptr, &size) != CL_SUCCESS)
    return false;
  std::vector<cl_device_id> devices(size / sizeof(cl_device_id));
  if (next_entries.clGetContextInfo(context, CL_CONTEXT_DEVICES, size, devices.data(), nullptr) !=
      CL_SUCCESS)
    return false;
  for (cl_device_id device : devices)
    if (!is_own_processor(device)) return false;
  return true;
}

/// Whether a header can stand before the program: not where an argument is wrong, which the runtime
/// tells, nor before a byte order mark, which must come first.
bool takes_header(cl_uint count, const char** strings, const std::size_t* lengths) {
  if (count == 0 || !strings) return false;
  for (cl_uint i = 0; i < count; ++i)
    if (!strings[i]) return false;
  const std::size_t length = lengths && lengths[0] ? lengths[0] : std::strlen(strings[0]);
  return !std::string_view(strings[0], length).starts_with("\xef\xbb\xbf");
}

CL_API_ENTRY cl_program CL_API_CALL create_program(cl_context context, cl_uint count,
                                                   const char** strings, const std::size_t* lengths,
                                                   cl_int* error) {
  if (!takes_header(count, strings, lengths) || !all_own_processor(context))
    return next_entries.clCreateProgramWithSource(context, count, strings, lengths, error);
  std::vector<const char*> with_header{header.c_str()};
  with_header.insert(with_header.end(), strings, strings + count);
  std::vector<std::size_t> with_length{header.size()};
  for (cl_uint i = 0; i < count; ++i) with_length.push_back(lengths ? lengths[i] : 0);
  cl_program program = next_entries.clCreateProgramWithSource(
      context, count + 1, with_header.data(), with_length.data(), error);
  log("program %p: built-ins are defined in front of its source", static_cast<void*>(program));
  return program;
}

std::string source_of(cl_program program) {
  return text_of([&](auto... out) {
    return next_entries.clGetProgramInfo(program, CL_PROGRAM_SOURCE, out...);
  });
}

/// A program's source is told as the user gave it.
CL_API_ENTRY cl_int CL_API_CALL get_program_info(cl_program program, cl_program_info what,
                                                 std::size_t size, void* value,
                                                 std::size_t* size_returned) {
  if (what == CL_PROGRAM_SOURCE) {
    const std::string source = source_of(program);
    if (source.starts_with(header)) {
      const std::size_t own_size = source.size() + 1 - header.size();
      if (value && size < own_size) return CL_INVALID_VALUE;
      if (value) std::memcpy(value, source.c_str() + header.size(), own_size);
      if (size_returned) *size_returned = own_size;
      return CL_SUCCESS;
    }
  }
  return next_entries.clGetProgramInfo(program, what, size, value, size_returned);
}

/// Programs that are included, maybe in the middle of an expression, are so as the user gave them.
CL_API_ENTRY cl_int CL_API_CALL compile_program(cl_program program, cl_uint device_count,
                                                const cl_device_id* devices, const char* options,
                                                cl_uint header_count, const cl_program* headers,
                                                const char** names,
                                                void(CL_CALLBACK* notify)(cl_program, void*),
                                                void* data) {
  std::vector<cl_program> plain, made;
  if (headers) plain.assign(headers, headers + header_count);
  for (cl_program& included : plain) {
    const std::string source = source_of(included);
    cl_context context = nullptr;
    if (!source.starts_with(header) ||
        next_entries.clGetProgramInfo(included, CL_PROGRAM_CONTEXT, sizeof context, &context,
                                      nullptr) != CL_SUCCESS)
      continue;
    const char* text = source.c_str() + header.size();
    included = next_entries.clCreateProgramWithSource(context, 1, &text, nullptr, nullptr);
    made.push_back(included);
  }
  const cl_int status =
      next_entries.clCompileProgram(program, device_count, devices, options, header_count,
                                    headers ? plain.data() : nullptr, names, notify, data);
  for (cl_program included : made) next_entries.clReleaseProgram(included);
  return status;
}

/// Fills layer_entries, if there is something to do.
void start() {
  const std::string mode = environment("ZORP_Z1_OPENCL");
  logs = environment("ZORP_Z1_OPENCL_LOG") == "1";
  if (mode == "none") return log("ZORP_Z1_OPENCL=none: programs are left alone");
  if (mode != "" && mode != "all") {
    std::fprintf(stderr, "zorp_z1: ZORP_Z1_OPENCL is all or none, not '%s'\n", mode.c_str());
    return;
  }
  if (!processor_has_avx512()) return log("this processor has no AVX-512: programs are left alone");
  // Beside the layer, or where libraries are found; its kernels are for all that is loaded later.
  if (!dlopen("libzorp_z1.so", RTLD_NOW | RTLD_GLOBAL)) {
    std::fprintf(stderr, "zorp_z1: programs run without the library: %s\n", dlerror());
    return;
  }
  header = header_text(mode == "all");
  log("built-ins are served by kernels %s", mode == "all" ? "everywhere" : "where they are faster");
  layer_entries.clCreateProgramWithSource = create_program;
  layer_entries.clGetProgramInfo = get_program_info;
  layer_entries.clCompileProgram = compile_program;
}

}  // namespace
}  // namespace zorp::opencl

using namespace zorp::opencl;

[[gnu::visibility("default")]] CL_API_ENTRY cl_int CL_API_CALL
clGetLayerInfo(cl_layer_info what, std::size_t size, void* value, std::size_t* size_returned) {
  constexpr char name[] = "zorp_z1";
  constexpr cl_layer_api_version version = CL_LAYER_API_VERSION_100;
  if (what != CL_LAYER_API_VERSION && what != CL_LAYER_NAME) return CL_INVALID_VALUE;
  const bool is_name = what == CL_LAYER_NAME;
  const std::size_t own_size = is_name ? sizeof name : sizeof version;
  if (value && size < own_size) return CL_INVALID_VALUE;
  if (value) std::memcpy(value, is_name ? name : static_cast<const void*>(&version), own_size);
  if (size_returned) *size_returned = own_size;
  return CL_SUCCESS;
}

[[gnu::visibility("default")]] CL_API_ENTRY cl_int CL_API_CALL
clInitLayer(cl_uint count, const cl_icd_dispatch* target, cl_uint* count_returned,
            const cl_icd_dispatch** layer) {
  if (!target || !count_returned || !layer) return CL_INVALID_VALUE;
  // The loader may know fewer functions or more.
  count = std::min(count, cl_uint(sizeof(cl_icd_dispatch) / sizeof(void*)));
  std::memcpy(&next_entries, target, count * sizeof(void*));
  start();
  *layer = &layer_entries;
  *count_returned = count;
  return CL_SUCCESS;
}
