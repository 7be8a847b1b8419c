#!/usr/bin/env python3
"""Compiles functions with the plugin and looks at what they call.

    calls_test.py CLANG OPT PLUGIN GENERATE LOOPS

LOOPS is the assembly of the loops that make_loops.py writes.
"""

import re
import subprocess
import sys
import unittest

from make_loops import loops

CLANG, OPT, PLUGIN, GENERATE, LOOPS = sys.argv[1:]

LANE_BYTES = {"double": 8, "float": 4, "half": 2, "int16_t": 2}
LANE_BYTES |= {"int32_t": 4, "uint32_t": 4, "int64_t": 8, "uint64_t": 8}

LOOP = """
void f({T}* restrict y, const {T}* restrict x) {{
  for (int i = 0; i < 1024; ++i) {{ {body} }}
}}
"""


def loop(body, element="double", before=""):
    return f"#include <math.h>\n{before}" + LOOP.format(T=element, body=body)


EXP = loop("y[i] = exp(x[i]);")
VECTOR = """
typedef double v __attribute__((ext_vector_type(8)));
void f(v* p) { *p = __builtin_elementwise_exp(*p); }
"""


def calls(assembly):
    """The functions that each function calls or jumps to."""
    found = {}
    for line in assembly.splitlines():
        if label := re.match(r"([A-Za-z_]\w*):", line):
            callees = found.setdefault(label[1], set())
        elif call := re.match(r"\s+(?:call|jmp)q?\s+(\w+)(?:@PLT)?\b", line):
            callees.add(call[1].removeprefix("__zorp_z1_"))
    return found


def run(*command, text):
    done = subprocess.run(command, input=text, capture_output=True, text=True)
    if done.returncode:
        raise AssertionError(done.stderr)
    return done.stdout


def compiled(source, *flags, language="c"):
    flags = flags if any(f.startswith("-march") for f in flags) else ("-march=znver4", *flags)
    if not any(f.startswith("-O") for f in flags):
        flags = ("-O3", *flags)
    plugin = f"-fpass-plugin={PLUGIN}"
    fixed = ["-x", language, "-fno-math-errno", "-mprefer-vector-width=512", plugin]
    return run(CLANG, *fixed, *flags, "-S", "-o", "-", "-", text=source)


class Calls(unittest.TestCase):
    def check(self, source, expected, *flags, function="f", **options):
        found = calls(compiled(source, *flags, **options))[function]
        self.assertEqual(found, set(expected.split()), f"flags: {flags}")

    def test_all_loops(self):
        """Each loop calls one kernel, in the width that fills a register with the least lanes."""
        with open(LOOPS) as file:
            found = calls(file.read())
        for loop in loops(GENERATE):
            width = 64 // min(LANE_BYTES[lane] for lane in loop.results + loop.operands)
            kernel = re.fullmatch("__zorp_z1_(.*?)1(|_native|_half|_rm)", loop.kernel)
            expected = kernel[1] + str(width) + kernel[2]
            self.assertEqual(found["loop_" + loop.name], {expected}, loop.name)

    def test_register_width(self):
        self.check(EXP, "exp8")
        self.check(EXP, "exp4", "-mprefer-vector-width=256")
        self.check(EXP, "exp2", "-mprefer-vector-width=128")
        self.check(EXP, "exp4", "-mno-evex512")
        # Narrow elements make the vectoriser compute many lanes at once.
        bytes_to_float = loop("y[i] = expf(x[i]);", "unsigned char")
        self.check(bytes_to_float, "expf32")
        self.check(bytes_to_float, "expf8", "-mprefer-vector-width=256")
        # A vector of 512 bits, where these are not used for arithmetic.
        self.check(VECTOR, "exp4", "-mprefer-vector-width=256")

    def test_features(self):
        """No kernel is called by functions that run on processors without what it needs."""
        for march in ("haswell", "x86-64-v4", "skylake-avx512", "znver3"):
            self.check(EXP, "exp", f"-march={march}")
            self.check(VECTOR, "exp", f"-march={march}")
            narrow = loop("y[i] = expf(x[i]);", "unsigned char")
            self.check(narrow, "expf", f"-march={march}")
        for march in ("icelake-server", "sapphirerapids", "znver5"):
            self.check(EXP, "exp8", f"-march={march}")
        half = loop("y[i] = __builtin_elementwise_exp(x[i]);", "_Float16")
        self.check(half, "exps32", "-march=sapphirerapids")
        by_function = EXP + """
__attribute__((target("arch=znver4"))) void g(double* restrict y, const double* restrict x) {
  for (int i = 0; i < 1024; ++i) y[i] = exp(x[i]);
}"""
        self.check(by_function, "exp", "-march=haswell")
        self.check(by_function, "exp8", "-march=haswell", function="g")

    def test_left_alone(self):
        self.check(EXP, "exp", "-fmath-errno")
        self.check(loop("y[i] = cbrt(x[i]);"), "cbrt8", "-fmath-errno")  # which never sets it
        self.check(EXP, "exp", "-ffp-exception-behavior=strict")
        self.check(EXP, "exp", "-frounding-math", "-ffp-exception-behavior=strict")
        self.check("#pragma STDC FENV_ACCESS ON\n" + EXP, "exp")
        self.check(EXP, "exp", "-fno-builtin")
        self.check(loop("y[i] = expl(x[i]);"), "expl")
        self.check(loop("y[i] = sqrt(floor(x[i]));"), "")
        self.check(loop("y[i] = ilogb(x[i]);"), "ilogb")  # of a NaN, the kernel's differs
        self.check(loop("if (i) y[i] = exp(y[i - 1]);"), "exp")  # each element needs the last one
        # Functions of the program's own.
        other = "double other(double) __attribute__((const));"
        self.check(loop("y[i] = other(x[i]);", before=other), "other")
        halves = "_Float16 logs(_Float16) __attribute__((const));"
        self.check(loop("y[i] = logs(x[i]);", "_Float16", before=halves), "logs")
        cbrt = "__attribute__((noinline, const)) double cbrt(double x) { return x / 3; }"
        self.check(loop("y[i] = cbrt(x[i]);", before=cbrt), "cbrt")

    def test_conditions(self):
        self.check(loop("if (x[i] > 0) y[i] = log(x[i]);"), "log8")
        both = "y[i] = x[i] > 1 ? pow(x[i], y[i]) : x[i] < -1 ? sin(x[i]) : 0;"
        self.check(loop(both), "pow8 sin8")
        declaration = "double __zorp_z1_log1(double);"
        self.check(loop("if (x[i] > 0) y[i] = __zorp_z1_log1(x[i]);", before=declaration), "log8")
        # The last lanes by a mask, too.
        tail = EXP.replace("1024", "n").replace("x)", "x, int n)")
        fold = "-prefer-predicate-over-epilogue=predicate-dont-vectorize"
        self.check(tail, "exp8", "-mllvm", fold)

    def test_tiers(self):
        def with_tier(tier):
            return f"-fplugin={PLUGIN}", "-mllvm", f"-zorp-z1-tier={tier}"

        self.check(EXP, "exp8_native", *with_tier("native"))
        self.check(VECTOR, "exp8_native", *with_tier("native"))
        self.check(EXP, "exp8_rm", *with_tier("rm"))
        self.check(loop("y[i] = cbrt(x[i]);"), "cbrt8", *with_tier("rm"))  # has no such tier
        self.check(loop("y[i] = logf(x[i]);", "float"), "logf16_half", *with_tier("half"))
        kernel = loop("y[i] = __zorp_z1_exp1(x[i]);", before="double __zorp_z1_exp1(double);")
        self.check(kernel, "exp8", *with_tier("native"))

    def test_second_results(self):
        """A variable that a kernel stores to doesn't keep a loop from being vectorised."""
        sincos = "double __zorp_z1_sincos1(double, double*);"
        body = "double c; const double s = __zorp_z1_sincos1(x[i], &c); y[i] = s + 3 * c;"
        self.check(loop(body, before=sincos), "sincos8")
        self.check(loop("if (x[i] > 0) {" + body + "}", before=sincos), "sincos8")
        # Each element needs the last one.
        chain = "if (i) y[i] = __zorp_z1_sincos1(y[i - 1], y + i - 1);"
        self.check(loop(chain, before=sincos), "sincos1")

    def test_shapes_of_programs(self):
        half_exp = "static double half_exp(double x) { return exp(x) / 2; }"
        self.check(loop("y[i] = half_exp(x[i]);", before=half_exp), "exp8")
        self.check(loop("y[0] += exp(x[i]);"), "exp8", "-ffast-math")
        straight = "".join(f"y[{i}] = exp(x[{i}]);" for i in range(8))
        function = f"void f(double* restrict y, double* restrict x) {{ {straight} }}"
        self.check("#include <math.h>\n" + function, "exp8")
        self.check(loop("y[i] = fmod(x[i], y[i]);"), "fmod8")
        # One call a step, unless the program asks for more.
        interleaved = EXP.replace("for", '_Pragma("clang loop interleave_count(2)") for')
        for source, steps in (EXP, 1), (interleaved, 2):
            self.assertEqual(len(re.findall(r"call\w*\s+__zorp_z1_exp8", compiled(source))), steps)
        self.check(loop("y[i] = __builtin_powi(x[i], 11);"), "pown8", "-fno-unroll-loops")
        # A scalar remainder stays with the C library.
        self.check(EXP.replace("1024", "1023"), "exp8 exp")

    def test_cxx(self):
        source = """
#include <algorithm>
#include <cmath>
#include <vector>
extern "C" void f(std::vector<float>& y, const std::vector<float>& x) {
  const auto squashed = [](float v) { return std::tanh(v) * std::exp(-v); };
  std::transform(x.begin(), x.begin() + 1024, y.begin(), squashed);
}"""
        # The vectors might overlap: then a loop over scalars runs.
        self.check(source, "tanhf16 expf16 tanhf expf", language="c++")

    def test_opencl(self):
        """Functions are convergent there, and built-ins become kernels by inlining."""
        source = """
double __zorp_z1_exp1(double);
__attribute__((overloadable)) double exp(double x) { return __zorp_z1_exp1(x); }
kernel void f(global double* restrict y, global const double* restrict x) {
  for (int i = 0; i < 1024; ++i) y[i] = exp(x[i]);
}"""
        self.check(source, "exp8", "-cl-std=CL3.0", language="cl")

    def test_levels_of_optimisation(self):
        for level in ("-O0", "-O1", "-O2", "-O3", "-Os"):
            self.check(VECTOR, "exp8", level)
        self.check(EXP, "exp", "-O0")
        self.check(EXP, "exp8", "-O2")
        # Nothing of the plugin's own stays in what a linker optimises later.
        for mode in ("thin", "full"):
            self.assertNotIn("zorp_z1.", compiled(EXP, f"-flto={mode}"))


class IntermediateCode(unittest.TestCase):
    """Shapes that no program in C has, through opt."""

    ZNVER4 = '"target-cpu"="znver4"'
    LINUX = "x86_64-pc-linux-gnu"

    def calls(self, body, attributes=ZNVER4, triple=LINUX, passes="zorp-z1-call"):
        text = f'target triple = "{triple}"\n{body}\nattributes #0 = {{ {attributes} }}'
        plugin = f"-load-pass-plugin={PLUGIN}"
        code = run(OPT, plugin, f"-passes={passes},verify", "-S", "-o", "-", "-", text=text)
        return re.findall(r"call .*?@([\w.]+)\(", code)

    def test_odd_widths(self):
        for lanes, element, expected in [
            (1, "double", ["exp1"]),
            (3, "double", ["exp3"]),
            (5, "double", ["exp8"]),
            (12, "double", ["exp16"]),
            (24, "double", ["exp16", "exp8"]),
            (2, "float", ["expf2"]),
            (33, "float", ["expf32", "expf1"]),
            (7, "half", ["exps8"]),
            (64, "half", ["exps32", "exps32"]),
        ]:
            letter = {"double": "f64", "float": "f32", "half": "f16"}[element]
            vector, name = f"<{lanes} x {element}>", f"llvm.exp.v{lanes}{letter}"
            body = f"""
declare {vector} @{name}({vector})
define {vector} @f({vector} %x) #0 {{
  %y = call {vector} @{name}({vector} %x)
  ret {vector} %y
}}"""
            self.assertEqual(self.calls(body), ["__zorp_z1_" + name for name in expected], vector)

    def test_operands(self):
        body = """
declare <8 x double> @llvm.ldexp.v8f64.v8i32(<8 x double>, <8 x i32>)
declare <16 x float> @llvm.powi.v16f32.i32(<16 x float>, i32)
declare <4 x double> @llvm.ldexp.v4f64.v4i64(<4 x double>, <4 x i64>)
define <4 x double> @f(<8 x double> %x, <8 x i32> %n, <16 x float> %s, i32 %m, <4 x i64> %l) #0 {
  %1 = call <8 x double> @llvm.ldexp.v8f64.v8i32(<8 x double> %x, <8 x i32> %n)
  %2 = call <16 x float> @llvm.powi.v16f32.i32(<16 x float> %s, i32 %m)
  %3 = frem <8 x double> %1, %x
  %4 = shufflevector <8 x double> %3, <8 x double> poison, <4 x i32> <i32 0, i32 1, i32 2, i32 3>
  %5 = call <4 x double> @llvm.ldexp.v4f64.v4i64(<4 x double> %4, <4 x i64> %l)
  ret <4 x double> %5
}"""
        kernels = ["__zorp_z1_ldexp8", "__zorp_z1_pownf16", "__zorp_z1_fmod8"]
        self.assertEqual(self.calls(body), [*kernels, "llvm.ldexp.v4f64.v4i64"])

    def test_masks(self):
        body = """
declare double @llvm.log.f64(double)
define void @f(ptr noalias %y, ptr noalias %x) #0 {
entry:
  br label %loop
loop:
  %i = phi i64 [ 0, %entry ], [ %next, %end ]
  %address = getelementptr double, ptr %x, i64 %i
  %v = load double, ptr %address
  %positive = fcmp ogt double %v, 0.0
  br i1 %positive, label %then, label %end
then:
  %log = call double @llvm.log.f64(double %v)
  %result = getelementptr double, ptr %y, i64 %i
  store double %log, ptr %result
  br label %end
end:
  %next = add i64 %i, 1
  %done = icmp eq i64 %next, 1024
  br i1 %done, label %exit, label %loop
exit:
  ret void
}"""
        offered = "function(zorp-z1-offer,loop-vectorize)"
        self.assertIn("zorp_z1.log8.masked", self.calls(body, passes=offered))
        called = self.calls(body, passes=offered + ",zorp-z1-call,function(simplifycfg),globaldce")
        self.assertIn("__zorp_z1_log8", called)
        self.assertNotIn("zorp_z1.log8.masked", called)

    def test_what_has_no_kernel(self):
        body = """
declare <8 x double> @llvm.exp.v8f64(<8 x double>)
declare <vscale x 2 x double> @llvm.exp.nxv2f64(<vscale x 2 x double>)
declare <4 x bfloat> @llvm.exp.v4bf16(<4 x bfloat>)
define void @f(<8 x double> %x, <vscale x 2 x double> %s, <4 x bfloat> %b) #0 {
  %1 = call <8 x double> @llvm.exp.v8f64(<8 x double> %x)
  %2 = call <vscale x 2 x double> @llvm.exp.nxv2f64(<vscale x 2 x double> %s)
  %3 = call <4 x bfloat> @llvm.exp.v4bf16(<4 x bfloat> %b)
  ret void
}"""
        others = ["llvm.exp.nxv2f64", "llvm.exp.v4bf16"]
        self.assertEqual(self.calls(body), ["__zorp_z1_exp8", *others])
        alone = ["llvm.exp.v8f64", *others]
        self.assertEqual(self.calls(body, triple="x86_64-pc-windows-msvc"), alone)
        self.assertEqual(self.calls(body, triple="aarch64-linux-gnu"), alone)
        self.assertEqual(self.calls(body, '"target-cpu"="haswell"'), alone)
        self.assertEqual(self.calls(body, 'strictfp "target-cpu"="znver4"'), alone)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
