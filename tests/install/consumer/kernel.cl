// A damped oscillation and its energy, on 16 floats.
kernel void oscillate(global const float16 *time, global float16 *position, global float16 *energy) {
  float16 c;
  const float16 s = sincos(time[0], &c);
  const float16 damping = exp(-0.1f * time[0]);
  position[0] = damping * s;
  energy[0] = hypot(damping * s, damping * c);
}
