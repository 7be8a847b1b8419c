// Loops over scalar built-ins, which the pass plugin vectorises.
#pragma OPENCL EXTENSION cl_khr_fp64 : enable
#pragma OPENCL EXTENSION cl_khr_fp16 : enable

kernel void loop_exp(global const double* x, global const double* y, global double* r, int n) {
  for (int i = 0; i < n; ++i) r[i] = exp(x[i]);
}
kernel void loop_pow(global const double* x, global const double* y, global double* r, int n) {
  for (int i = 0; i < n; ++i) r[i] = pow(x[i], y[i]);
}
kernel void loop_native_sin(global const float* x, global const float* y, global float* r, int n) {
  for (int i = 0; i < n; ++i) r[i] = native_sin(x[i]);
}
kernel void loop_ldexp(global const float* x, global const int* y, global float* r, int n) {
  for (int i = 0; i < n; ++i) r[i] = ldexp(x[i], y[i]);
}
kernel void loop_tanh(global const half* x, global const half* y, global half* r, int n) {
  for (int i = 0; i < n; ++i) r[i] = tanh(x[i]);
}
kernel void loop_convert(global const float* x, global const float* y, global int* r, int n) {
  for (int i = 0; i < n; ++i) r[i] = convert_int_sat_rte(x[i]);
}
