// The functions that the layer replaces, one by one, and when it replaces none.
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <string>
#include <vector>

#include "clients/opencl/layer/runtime.h"
#include "tests/support/processor.h"

namespace zorp::opencl {
namespace {

namespace fs = std::filesystem;

constexpr std::size_t kItems = 16;
// Of the double 0.5: the runtime's own has other bits, by chance.
constexpr const char* kSource =
    "kernel void k(global double *x) {\n"
    "  const size_t i = get_global_id(0);\n  x[i] = sinh(x[i]) + tgamma(x[i]);\n}\n";

class OpenclLayerEntries : public testing::Test {
 protected:
  void SetUp() override {
    if (!test::has_avx512()) GTEST_SKIP() << "this processor has no AVX-512";
  }

  static const Runtime& runtime() {
    static const Runtime only = [] {
      setenv("ZORP_Z1_OPENCL", "all", 1);
      return Runtime(ZORP_OPENCL_LAYER);
    }();
    return only;
  }
  static const Entries& plain() { return runtime().without_layer(); }
  static const Entries& with_layer() { return runtime().with_layer(); }

  static std::vector<double> run(const Program& program) {
    std::vector<double> x(kItems, 0.5);
    for (std::size_t i = 0; i < kItems; ++i) x[i] += 0.37 * double(i);
    const Launch launch(runtime(), program, "k", {{x.data(), kItems * sizeof(double)}});
    launch(1, kItems);
    launch.read();
    return x;
  }

  static std::string source_of(const Entries& entries, cl_program program) {
    std::size_t size = 0;
    EXPECT_EQ(entries.clGetProgramInfo(program, CL_PROGRAM_SOURCE, 0, nullptr, &size), CL_SUCCESS);
    std::string text(size, '?');
    EXPECT_EQ(entries.clGetProgramInfo(program, CL_PROGRAM_SOURCE, size, text.data(), nullptr),
              CL_SUCCESS);
    EXPECT_EQ(text.back(), '\0');
    text.pop_back();
    return text;
  }

  static cl_program create(const Entries& entries, const char* source) {
    return entries.clCreateProgramWithSource(runtime().context(), 1, &source, nullptr, nullptr);
  }
};

TEST_F(OpenclLayerEntries, SourceIsOneTextOfSeveralStringsAndToldAsItWasGiven) {
  // Tokens across strings, a string that isn't terminated, a length of 0.
  const char* strings[] = {"kernel void k(global dou", "ble *x) {\n  x[0] = floXXX",
                           "or(2.5);\n}\n"};
  const std::size_t lengths[] = {24, 22, 0};
  const std::string whole = "kernel void k(global double *x) {\n  x[0] = floor(2.5);\n}\n";
  cl_int status = -1;
  const cl_program program =
      with_layer().clCreateProgramWithSource(runtime().context(), 3, strings, lengths, &status);
  ASSERT_EQ(status, CL_SUCCESS);
  EXPECT_EQ(source_of(with_layer(), program), whole);
  // Behind the layer it has the header.
  const std::string behind = source_of(plain(), program);
  EXPECT_TRUE(behind.ends_with(whole));
  EXPECT_NE(behind.find("double8 sinh(double8"), behind.npos);

  char small[4];
  EXPECT_EQ(with_layer().clGetProgramInfo(program, CL_PROGRAM_SOURCE, sizeof small, small, nullptr),
            CL_INVALID_VALUE);
  cl_uint devices = 0;
  EXPECT_EQ(with_layer().clGetProgramInfo(program, CL_PROGRAM_NUM_DEVICES, sizeof devices, &devices,
                                          nullptr),
            CL_SUCCESS);
  EXPECT_EQ(devices, 1u);
  const cl_device_id device = runtime().device();
  EXPECT_EQ(with_layer().clBuildProgram(program, 1, &device, "", nullptr, nullptr), CL_SUCCESS);
  with_layer().clReleaseProgram(program);
}

TEST_F(OpenclLayerEntries, WrongArgumentsAreTheRuntimesToRefuse) {
  const char* one[] = {kSource};
  const struct {
    cl_context context;
    cl_uint count;
    const char** strings;
  } wrong[] = {{runtime().context(), 0, one}, {nullptr, 1, one}};
  for (const auto& w : wrong) {
    cl_int expected = 0, actual = 0;
    EXPECT_EQ(plain().clCreateProgramWithSource(w.context, w.count, w.strings, nullptr, &expected),
              nullptr);
    EXPECT_EQ(
        with_layer().clCreateProgramWithSource(w.context, w.count, w.strings, nullptr, &actual),
        nullptr);
    EXPECT_EQ(actual, expected);
  }
}

TEST_F(OpenclLayerEntries, IncludedProgramsAreIncludedAsTheyWereGiven) {
  // In the middle of an initialiser, and as a file of functions.
  const cl_program values = create(with_layer(), "1.0, 2.0, 3.0");
  const cl_program functions =
      create(with_layer(), "double f(double x) { return sinh(x) + __LINE__; }\n");
  const cl_program program = create(with_layer(),
                                    "#include \"functions.h\"\n"
                                    "constant double list[] = {\n#include \"values.h\"\n};\n"
                                    "kernel void k(global double *x) {\n"
                                    "  const size_t i = get_global_id(0);\n"
                                    "  x[i] = f(x[i]) + list[i % 3];\n}\n");
  const cl_device_id device = runtime().device();
  const cl_program headers[] = {values, functions};
  const char* names[] = {"values.h", "functions.h"};
  ASSERT_EQ(
      with_layer().clCompileProgram(program, 1, &device, "", 2, headers, names, nullptr, nullptr),
      CL_SUCCESS);
  cl_int status = -1;
  const cl_program linked = with_layer().clLinkProgram(runtime().context(), 1, &device, "", 1,
                                                       &program, nullptr, nullptr, &status);
  ASSERT_EQ(status, CL_SUCCESS);
  const Program whole(runtime(), with_layer(),
                      "kernel void k(global double *x) {\n"
                      "  const size_t i = get_global_id(0);\n"
                      "  x[i] = sinh(x[i]) + 1 + (i % 3 + 1.0);\n}\n");
  EXPECT_EQ(run(Program(runtime(), with_layer(), linked)), run(whole));
  for (cl_program p : {values, functions, program}) with_layer().clReleaseProgram(p);
}

TEST_F(OpenclLayerEntries, BinariesKeepTheirKernels) {
  const Program built(runtime(), with_layer(), kSource);
  ASSERT_EQ(built.status(), CL_SUCCESS) << built.log();
  std::size_t size = 0;
  with_layer().clGetProgramInfo(built.get(), CL_PROGRAM_BINARY_SIZES, sizeof size, &size, nullptr);
  std::vector<unsigned char> binary(size);
  unsigned char* data = binary.data();
  with_layer().clGetProgramInfo(built.get(), CL_PROGRAM_BINARIES, sizeof data, &data, nullptr);
  const cl_device_id device = runtime().device();
  const unsigned char* const_data = data;
  cl_int status = -1;
  const cl_program program = with_layer().clCreateProgramWithBinary(
      runtime().context(), 1, &device, &size, &const_data, nullptr, &status);
  ASSERT_EQ(status, CL_SUCCESS);
  ASSERT_EQ(with_layer().clBuildProgram(program, 1, &device, "", nullptr, nullptr), CL_SUCCESS);
  const std::vector<double> results = run(Program(runtime(), with_layer(), program));
  EXPECT_EQ(results, run(built));
  // The kernels' results, not the runtime's.
  EXPECT_NE(results, run(Program(runtime(), plain(), kSource)));
}

TEST_F(OpenclLayerEntries, BuildsTakeLittleLonger) {
  // Time of this process, whatever else the machine does. Each text is a new one: the runtime keeps
  // what it has compiled.
  double least[2] = {10, 10};
  for (int round = 0; round < 5; ++round)
    for (const Entries* entries : {&plain(), &with_layer()}) {
      const std::string source = "constant int c = " + std::to_string(round) + ";\n" + kSource;
      const std::clock_t start = std::clock();
      const Program program(runtime(), *entries, source);
      const double time = double(std::clock() - start) / CLOCKS_PER_SEC;
      ASSERT_EQ(program.status(), CL_SUCCESS) << program.log();
      double& shortest = least[entries == &with_layer()];
      shortest = std::min(shortest, time);
    }
  std::printf("build: %.3f s, with the layer %.3f s\n", least[0], least[1]);
  EXPECT_LT(least[1] - least[0], 0.2);
}

/// A second copy of the layer, with a state of its own, before `target`.
Entries copy_of_layer(const Entries& target) {
  static int copies = 0;
  const std::string name =
      "zorp_layer_" + std::to_string(getpid()) + "_" + std::to_string(copies++) + ".so";
  const fs::path copy = fs::temp_directory_path() / name;
  fs::copy_file(ZORP_OPENCL_LAYER, copy, fs::copy_options::overwrite_existing);
  const Entries entries = layered(target, copy);
  fs::remove(copy);
  return entries;
}

// A runtime of another kind: what it says of its devices, and what it was given to compile.
struct Device {
  cl_device_type type;
  const char *name, *platform;
};
std::vector<Device> foreign_devices;
const char** given_strings;

cl_int tell(const void* from, std::size_t bytes, std::size_t size, void* value,
            std::size_t* size_returned) {
  if (size_returned) *size_returned = bytes;
  if (value) std::memcpy(value, from, std::min(size, bytes));
  return CL_SUCCESS;
}

cl_int CL_API_CALL context_info(cl_context, cl_context_info what, std::size_t size, void* value,
                                std::size_t* returned) {
  if (what != CL_CONTEXT_DEVICES) return CL_INVALID_VALUE;
  std::vector<Device*> devices;
  for (Device& device : foreign_devices) devices.push_back(&device);
  return tell(devices.data(), devices.size() * sizeof(Device*), size, value, returned);
}

cl_int CL_API_CALL device_info(cl_device_id id, cl_device_info what, std::size_t size, void* value,
                               std::size_t* returned) {
  const Device* device = reinterpret_cast<const Device*>(id);
  if (what == CL_DEVICE_TYPE)
    return tell(&device->type, sizeof device->type, size, value, returned);
  if (what == CL_DEVICE_PLATFORM) return tell(&device, sizeof device, size, value, returned);
  return tell(device->name, std::strlen(device->name) + 1, size, value, returned);
}

cl_int CL_API_CALL platform_info(cl_platform_id id, cl_platform_info, std::size_t size, void* value,
                                 std::size_t* returned) {
  const char* name = reinterpret_cast<const Device*>(id)->platform;
  return tell(name, std::strlen(name) + 1, size, value, returned);
}

cl_program CL_API_CALL create_program(cl_context, cl_uint count, const char** strings,
                                      const std::size_t*, cl_int*) {
  given_strings = count == 1 ? strings : nullptr;
  return nullptr;
}

TEST_F(OpenclLayerEntries, ForeignDevicesGetTheProgramAsItIs) {
  Entries foreign{};
  foreign.clGetContextInfo = context_info;
  foreign.clGetDeviceInfo = device_info;
  foreign.clGetPlatformInfo = platform_info;
  foreign.clCreateProgramWithSource = create_program;
  setenv("ZORP_Z1_OPENCL", "all", 1);
  const Entries entries = copy_of_layer(foreign);
  ASSERT_NE(entries.clCreateProgramWithSource, foreign.clCreateProgramWithSource);

  const char* pocl = "Portable Computing Language";
  const Device own = {CL_DEVICE_TYPE_CPU, "pthread-skylake-avx512", pocl};
  const std::vector<std::vector<Device>> contexts = {{{CL_DEVICE_TYPE_GPU, "pthread", pocl}},
                                                     {{CL_DEVICE_TYPE_CPU, "remote", pocl}},
                                                     {{CL_DEVICE_TYPE_CPU, "pthread", "Another"}},
                                                     {own, {CL_DEVICE_TYPE_GPU, "gpu", "Another"}}};
  const char* source = kSource;
  for (const auto& devices : contexts) {
    foreign_devices = devices;
    given_strings = nullptr;
    entries.clCreateProgramWithSource(nullptr, 1, &source, nullptr, nullptr);
    EXPECT_EQ(given_strings, &source);
  }
  foreign_devices = {own};
  entries.clCreateProgramWithSource(nullptr, 1, &source, nullptr, nullptr);
  EXPECT_EQ(given_strings, nullptr);
}

TEST_F(OpenclLayerEntries, VariablesOfTheEnvironmentSwitchItOff) {
  const struct {
    const char *value, *message;
  } cases[] = {{"none", "ZORP_Z1_OPENCL=none"}, {"some", "is all or none, not 'some'"}};
  for (const auto& c : cases) {
    setenv("ZORP_Z1_OPENCL", c.value, 1);
    setenv("ZORP_Z1_OPENCL_LOG", "1", 1);
    testing::internal::CaptureStderr();
    const Entries entries = copy_of_layer(plain());
    EXPECT_NE(testing::internal::GetCapturedStderr().find(c.message), std::string::npos);
    EXPECT_EQ(std::memcmp(&entries, &plain(), sizeof entries), 0);
  }
  unsetenv("ZORP_Z1_OPENCL_LOG");
}

}  // namespace
}  // namespace zorp::opencl
