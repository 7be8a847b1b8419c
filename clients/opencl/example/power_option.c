// An ordinary OpenCL program: the price of a power option by Monte Carlo, in double8 and in
// float16. It knows nothing of the library; the layer serves it unchanged. Run it without the
// layer, then with it, to see both times and the largest difference of the payoffs:
//
//   power_option payoffs.cl payoffs.bin
//   OPENCL_LAYERS=/path/libzorp_z1_opencl_layer.so power_option payoffs.cl payoffs.bin
//
// A results file that doesn't exist is written, one that exists is compared with.
#define CL_TARGET_OPENCL_VERSION 120
#include <CL/cl.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

enum { DRAWS = 1 << 20, LAUNCHES = 10 };

static void check(cl_int status, const char* what) {
  if (status == CL_SUCCESS) return;
  fprintf(stderr, "power_option: %s: status %d\n", what, status);
  exit(1);
}

static char* read_text(const char* path) {
  FILE* file = fopen(path, "rb");
  if (!file) {
    fprintf(stderr, "power_option: %s: cannot be read\n", path);
    exit(1);
  }
  fseek(file, 0, SEEK_END);
  const size_t size = (size_t)ftell(file);
  rewind(file);
  char* text = malloc(size + 1);
  text[fread(text, 1, size, file)] = 0;
  fclose(file);
  return text;
}

// Random numbers between 0 and 1, always the same (xorshift).
static double uniform(void) {
  static unsigned long long state = 88172645463325252ull;
  state ^= state << 13;
  state ^= state >> 7;
  state ^= state << 17;
  return ((double)(state >> 12) + 0.5) * 0x1p-52;
}

static double seconds(void) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return (double)now.tv_sec + 1e-9 * (double)now.tv_nsec;
}

static double lane(const void* array, size_t lane_bytes, size_t i) {
  return lane_bytes == 8 ? ((const double*)array)[i] : (double)((const float*)array)[i];
}

struct Runtime {
  cl_device_id device;
  cl_context context;
  cl_command_queue queue;
};

// Computes the payoffs of all draws, and prints price and time.
static void price(const struct Runtime* runtime, const char* source, const char* vector,
                  size_t lane_bytes, size_t lanes, void* payoffs) {
  const size_t bytes = DRAWS * lane_bytes, items = DRAWS / lanes;
  cl_int status;
  char options[64];
  snprintf(options, sizeof options, "-DVECTOR=%s -DSCALAR=%s", vector,
           lane_bytes == 8 ? "double" : "float");
  cl_program program = clCreateProgramWithSource(runtime->context, 1, &source, NULL, &status);
  check(status, "program");
  check(clBuildProgram(program, 1, &runtime->device, options, NULL, NULL), "build");
  cl_kernel kernel = clCreateKernel(program, "payoffs", &status);
  check(status, "kernel");

  cl_mem buffers[3];
  for (cl_uint i = 0; i < 3; ++i) {
    for (size_t j = 0; i < 2 && j < DRAWS; ++j) {
      const double draw = uniform();
      // A float below 1.
      if (lane_bytes == 8)
        ((double*)payoffs)[j] = draw;
      else
        ((float*)payoffs)[j] = fminf((float)draw, 0x1.fffffep-1f);
    }
    buffers[i] = clCreateBuffer(runtime->context, CL_MEM_COPY_HOST_PTR, bytes, payoffs, &status);
    check(status, "buffer");
    check(clSetKernelArg(kernel, i, sizeof buffers[i], &buffers[i]), "argument");
  }
  double least = INFINITY;
  for (int i = 0; i < LAUNCHES; ++i) {
    const double start = seconds();
    check(clEnqueueNDRangeKernel(runtime->queue, kernel, 1, NULL, &items, NULL, 0, NULL, NULL),
          "launch");
    check(clFinish(runtime->queue), "launch");
    least = fmin(least, seconds() - start);
  }
  check(clEnqueueReadBuffer(runtime->queue, buffers[2], CL_TRUE, 0, bytes, payoffs, 0, NULL, NULL),
        "result");
  double sum = 0;
  for (size_t i = 0; i < DRAWS; ++i) sum += lane(payoffs, lane_bytes, i);
  printf("%-8s price %.6f, %6.2f ns a draw\n", vector, exp(-0.03 * 2) * sum / DRAWS,
         1e9 * least / DRAWS);

  for (int i = 0; i < 3; ++i) clReleaseMemObject(buffers[i]);
  clReleaseKernel(kernel);
  clReleaseProgram(program);
}

static void print_difference(const char* vector, size_t lane_bytes, const void* a, const void* b) {
  double largest = 0;
  for (size_t i = 0; i < DRAWS; ++i)
    largest = fmax(largest, fabs(lane(a, lane_bytes, i) - lane(b, lane_bytes, i)));
  printf("%-8s largest difference of payoffs: %.2g\n", vector, largest);
}

int main(int argc, char** argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: power_option payoffs.cl RESULTS\n");
    return 2;
  }
  struct Runtime runtime;
  cl_platform_id platform;
  cl_int status;
  check(clGetPlatformIDs(1, &platform, NULL), "platform");
  check(clGetDeviceIDs(platform, CL_DEVICE_TYPE_ALL, 1, &runtime.device, NULL), "device");
  runtime.context = clCreateContext(NULL, 1, &runtime.device, NULL, NULL, &status);
  check(status, "context");
  runtime.queue = clCreateCommandQueue(runtime.context, runtime.device, 0, &status);
  check(status, "queue");

  // Doubles, then floats.
  const size_t bytes[] = {DRAWS * sizeof(double), DRAWS * sizeof(float)};
  char* payoffs = malloc(bytes[0] + bytes[1]);
  char* source = read_text(argv[1]);
  price(&runtime, source, "double8", sizeof(double), 8, payoffs);
  price(&runtime, source, "float16", sizeof(float), 16, payoffs + bytes[0]);

  FILE* file = fopen(argv[2], "rb");
  if (file) {
    char* before = malloc(bytes[0] + bytes[1]);
    if (fread(before, 1, bytes[0] + bytes[1], file) != bytes[0] + bytes[1]) {
      fprintf(stderr, "power_option: %s: holds no payoffs\n", argv[2]);
      return 1;
    }
    print_difference("double8", sizeof(double), before, payoffs);
    print_difference("float16", sizeof(float), before + bytes[0], payoffs + bytes[0]);
    free(before);
  } else {
    file = fopen(argv[2], "wb");
    if (!file || fwrite(payoffs, 1, bytes[0] + bytes[1], file) != bytes[0] + bytes[1]) {
      fprintf(stderr, "power_option: %s: cannot be written\n", argv[2]);
      return 1;
    }
  }
  fclose(file);
  free(source);
  free(payoffs);
  clReleaseCommandQueue(runtime.queue);
  clReleaseContext(runtime.context);
  return 0;
}
