// Half instructions for the test of their emulator: for each one a callable piece of code and its
// text, from which the test works out by itself what the instruction must do. Then the code that
// runs a piece with all registers under the test's control.

    .intel_syntax noprefix

    .macro entry text:vararg
    .text
1:  \text
    ret
    .section .rodata.str, "a"
2:  .asciz "\text"
    .section .data.rel.ro, "aw"
    .quad 1b, 2b
    .endm

    .section .data.rel.ro, "aw"
    .balign 8
    .global fp16trap_instructions
fp16trap_instructions:

// Packed halves. Together the variants use each register extension bit by itself, all forms of
// addresses, and a displacement of each size.

    .macro packed2 op, more:vararg
    entry \op zmm1, zmm2, zmm3 \more
    entry \op zmm25{k1}, zmm18, zmm13 \more
    entry \op ymm9{k2}{z}, ymm31, ymm20 \more
    entry \op xmm17{k3}, xmm10, xmm30 \more
    entry \op xmm1, xmm1, xmm1 \more
    entry \op zmm5{k4}{z}, zmm29, zmmword ptr [rax+0x80] \more
    entry \op ymm26{k5}, ymm5, ymmword ptr [r12+r9*2-0x60] \more
    entry \op xmm7, xmm6, xmmword ptr [rip+fp16trap_memory+16] \more
    entry \op xmm8{k6}, xmm22, word ptr [rbp+rcx*4+6]{1to8} \more
    entry \op ymm19{k7}{z}, ymm3, word ptr [r13+0x123]{1to16} \more
    entry \op zmm14{k1}, zmm11, word ptr [rdx+r10+0x20]{1to32} \more
    .endm

// One source: `to` and `from` are the registers of results and operands at 512, 256, 128 bits, then
// their sizes in memory, that of a lane and the number of lanes.

    .macro one_source op, to5, to2, to1, from5, from2, from1, size5, size2, size1, lane, n5, n2, n1, \
                      more:vararg
    entry \op \to5\()1, \from5\()3 \more
    entry \op \to5\()25{k1}, \from5\()13 \more
    entry \op \to2\()9{k2}{z}, \from2\()20 \more
    entry \op \to1\()17{k3}, \from1\()30 \more
    entry \op \to5\()5{k4}{z}, \size5 ptr [rax+0x80] \more
    entry \op \to2\()26{k5}, \size2 ptr [r12+r9*2-0x60] \more
    entry \op \to1\()7, \size1 ptr [rip+fp16trap_memory+16] \more
    entry \op \to1\()8{k6}, \lane ptr [rbp+rcx*4+8]{1to\n1} \more
    entry \op \to2\()19{k7}{z}, \lane ptr [r13+0x123]{1to\n2} \more
    entry \op \to5\()14{k1}, \lane ptr [rdx+r10+0x20]{1to\n5} \more
    .endm
    .macro packed1 op, more:vararg
    one_source \op, zmm, ymm, xmm, zmm, ymm, xmm, zmmword, ymmword, xmmword, word, 32, 16, 8, \more
    .endm
    .macro widening2 op
    one_source \op, zmm, ymm, xmm, ymm, xmm, xmm, ymmword, xmmword, qword, word, 16, 8, 4
    entry \op xmm7, qword ptr [rdi+0x38]
    .endm
    .macro widening4 op
    one_source \op, zmm, ymm, xmm, xmm, xmm, xmm, xmmword, qword, dword, word, 8, 4, 2
    entry \op xmm7, dword ptr [rdi+0x34]
    .endm
    .macro narrowing2 op
    one_source \op, ymm, xmm, xmm, zmm, ymm, xmm, zmmword, ymmword, xmmword, dword, 16, 8, 4
    modes \op ymm21{k1}, zmm12
    .endm
    .macro narrowing4 op
    one_source \op, xmm, xmm, xmm, zmm, ymm, xmm, zmmword, ymmword, xmmword, qword, 8, 4, 2
    modes \op xmm21{k1}, zmm12
    .endm

// An instruction in all static modes.

    .macro modes text:vararg
    .irp mode, rn, rd, ru, rz
    entry \text, {\mode\()-sae}
    .endr
    .endm

    .macro scalar op, size=word, more:vararg
    entry \op xmm1, xmm2, xmm3 \more
    entry \op xmm25{k1}, xmm18, xmm13 \more
    entry \op xmm9{k2}{z}, xmm31, xmm20 \more
    entry \op xmm17{k3}{z}, xmm10, xmm30 \more
    entry \op xmm5{k4}, xmm29, \size ptr [rax+0x40] \more
    entry \op xmm26, xmm5, \size ptr [r12+r9*2-0x68] \more
    entry \op xmm7{k2}{z}, xmm6, \size ptr [rip+fp16trap_memory+32] \more
    .endm

    .macro rounded2 op, register=zmm
    modes \op \register\()21{k1}, \register\()12, \register\()27
    entry \op \register\()2{k3}{z}, \register\()17, \register\()4, {ru-sae}
    .endm

    .irp op, vaddph, vsubph, vmulph, vdivph, vscalefph
    packed2 \op
    rounded2 \op
    .endr
    .irp op, vminph, vmaxph
    packed2 \op
    entry \op zmm21{k1}, zmm12, zmm27, {sae}
    .endr
    .irp op, vaddsh, vsubsh, vmulsh, vdivsh, vscalefsh, vsqrtsh
    scalar \op
    rounded2 \op, xmm
    .endr
    .irp op, vminsh, vmaxsh, vgetexpsh
    scalar \op
    entry \op xmm21{k1}, xmm12, xmm27, {sae}
    .endr
    .irp op, vrcpsh, vrsqrtsh
    scalar \op
    .endr
    packed1 vsqrtph
    modes vsqrtph zmm21{k1}, zmm12
    packed1 vgetexpph
    entry vgetexpph zmm21{k1}, zmm12, {sae}
    packed1 vrcpph
    packed1 vrsqrtph
    packed1 vrndscaleph, , 0x10
    packed1 vreduceph, , 0x24
    packed1 vgetmantph, , 0x06
    scalar vrndscalesh, word, , 0x10
    scalar vreducesh, word, , 0x24
    scalar vgetmantsh, word, , 0x06
    .irp immediate, 0x01, 0x32, 0x54, 0xa3
    entry vrndscaleph zmm21{k1}, zmm12, {sae}, \immediate
    entry vreduceph zmm21{k1}, zmm12, {sae}, \immediate
    entry vrndscalesh xmm21{k1}, xmm12, xmm7, {sae}, \immediate
    entry vreducesh xmm21{k1}, xmm12, xmm7, {sae}, \immediate
    .endr
    .irp immediate, 0x00, 0x05, 0x0b
    entry vgetmantph zmm21{k1}, zmm12, {sae}, \immediate
    entry vgetmantsh xmm21{k1}, xmm12, xmm7, {sae}, \immediate
    .endr

// Fused operations.

    .macro fused kind, digits
    packed2 vf\kind\digits\()ph
    rounded2 vf\kind\digits\()ph
    .endm
    .macro fused_scalar kind, digits
    scalar vf\kind\digits\()sh
    rounded2 vf\kind\digits\()sh, xmm
    .endm
    .irp digits, 132, 213, 231
    .irp kind, madd, msub, nmadd, nmsub
    fused \kind, \digits
    fused_scalar \kind, \digits
    .endr
    fused maddsub, \digits
    fused msubadd, \digits
    .endr

// Complex operations: their destination must differ from their sources, and lanes are pairs.

    .irp op, vfmulc, vfcmulc, vfmaddc, vfcmaddc
    entry \op\()ph zmm1, zmm2, zmm3
    entry \op\()ph zmm25{k1}, zmm18, zmm13
    entry \op\()ph ymm9{k2}{z}, ymm31, ymm20
    entry \op\()ph xmm17{k3}, xmm10, xmm30
    entry \op\()ph zmm5{k4}{z}, zmm29, zmmword ptr [rax+0x80]
    entry \op\()ph xmm8{k6}, xmm22, dword ptr [rbp+rcx*4+8]{1to4}
    entry \op\()ph zmm14{k1}, zmm11, dword ptr [rdx+r10+0x20]{1to16}
    rounded2 \op\()ph
    scalar \op\()sh, dword
    rounded2 \op\()sh, xmm
    .endr

// Tests.

    .irp immediate, 0x00, 0x05, 0x0e, 0x13, 0x1c
    entry vcmpph k5, zmm2, zmm3, \immediate
    entry vcmpph k2{k1}, zmm18, zmm13, {sae}, \immediate
    entry vcmpph k1{k1}, ymm31, ymm20, \immediate
    entry vcmpph k7{k3}, xmm10, word ptr [rbp+rcx*4+6]{1to8}, \immediate
    entry vcmpph k3, zmm29, zmmword ptr [rax+0x80], \immediate
    entry vcmpsh k5, xmm2, xmm3, \immediate
    entry vcmpsh k2{k1}, xmm18, xmm13, {sae}, \immediate
    entry vcmpsh k3{k2}, xmm29, word ptr [rax+0x80], \immediate
    .endr
    .irp immediate, 0x01, 0x5a, 0x99, 0xe6
    entry vfpclassph k5, zmm3, \immediate
    entry vfpclassph k2{k1}, ymm20, \immediate
    entry vfpclassph k7{k3}, word ptr [rbp+rcx*4+6]{1to8}, \immediate
    entry vfpclassph k3, zmmword ptr [rax+0x80], \immediate
    entry vfpclasssh k5{k2}, xmm30, \immediate
    entry vfpclasssh k6, word ptr [rax+0x80], \immediate
    .endr
    .irp op, vcomish, vucomish
    entry \op xmm2, xmm3
    entry \op xmm4, xmm4
    entry \op xmm20, xmm31, {sae}
    entry \op xmm13, word ptr [rax+0x22]
    .endr

// Conversions between floating-point types.

    widening2 vcvtph2psx
    entry vcvtph2psx zmm21{k1}, ymm12, {sae}
    widening4 vcvtph2pd
    entry vcvtph2pd zmm21{k1}, xmm12, {sae}
    narrowing2 vcvtps2phx
    narrowing4 vcvtpd2ph
    scalar vcvtsh2ss
    scalar vcvtsh2sd
    scalar vcvtss2sh, dword
    scalar vcvtsd2sh, qword
    rounded2 vcvtss2sh, xmm
    rounded2 vcvtsd2sh, xmm
    entry vcvtsh2ss xmm21{k1}, xmm12, xmm7, {sae}
    entry vcvtsh2sd xmm21{k1}, xmm12, xmm7, {sae}

// Conversions from and to integers.

    .irp op, vcvtph2w, vcvtph2uw, vcvtw2ph, vcvtuw2ph
    packed1 \op
    modes \op zmm21{k1}, zmm12
    .endr
    .irp op, vcvttph2w, vcvttph2uw
    packed1 \op
    entry \op zmm21{k1}, zmm12, {sae}
    .endr
    .irp op, vcvtph2dq, vcvtph2udq
    widening2 \op
    modes \op zmm21{k1}, ymm12
    .endr
    .irp op, vcvttph2dq, vcvttph2udq
    widening2 \op
    entry \op zmm21{k1}, ymm12, {sae}
    .endr
    .irp op, vcvtph2qq, vcvtph2uqq
    widening4 \op
    modes \op zmm21{k1}, xmm12
    .endr
    .irp op, vcvttph2qq, vcvttph2uqq
    widening4 \op
    entry \op zmm21{k1}, xmm12, {sae}
    .endr
    narrowing2 vcvtdq2ph
    narrowing2 vcvtudq2ph
    narrowing4 vcvtqq2ph
    narrowing4 vcvtuqq2ph

    .irp op, vcvtsh2si, vcvtsh2usi, vcvttsh2si, vcvttsh2usi
    entry \op eax, xmm3
    entry \op r11, xmm29
    entry \op r14d, word ptr [rdx+0x42]
    entry \op rbx, word ptr [rdx+0x42]
    .endr
    .irp op, vcvtsh2si, vcvtsh2usi
    modes \op edi, xmm14
    modes \op r15, xmm23
    .endr
    .irp op, vcvttsh2si, vcvttsh2usi
    entry \op edi, xmm14, {sae}
    entry \op r15, xmm23, {sae}
    .endr
    .irp op, vcvtsi2sh, vcvtusi2sh
    entry \op xmm1, xmm2, ebx
    entry \op xmm21, xmm28, r11
    entry \op xmm9, xmm9, dword ptr [rdx+0x48]
    entry \op xmm9, xmm19, qword ptr [rdx+0x48]
    modes \op xmm17, xmm5, r14d
    modes \op xmm7, xmm25, rsi
    .endr

// Moves.

    entry vmovsh xmm1, xmm2, xmm3
    entry vmovsh xmm25{k1}, xmm18, xmm13
    entry vmovsh xmm9{k2}{z}, xmm31, xmm20
    entry vmovsh xmm17{k3}{z}, xmm10, xmm30
    entry vmovsh.s xmm1, xmm2, xmm3
    entry vmovsh.s xmm25{k1}, xmm18, xmm13
    entry vmovsh.s xmm9{k2}{z}, xmm31, xmm20
    entry vmovsh.s xmm13{k3}{z}, xmm10, xmm30
    entry vmovsh xmm5, word ptr [rax+0x40]
    entry vmovsh xmm26{k1}, word ptr [r12+r9*2-0x68]
    entry vmovsh xmm6{k2}{z}, word ptr [rip+fp16trap_memory+32]
    entry vmovsh xmm6{k3}{z}, word ptr [rip+fp16trap_memory+32]
    entry vmovsh word ptr [rax+0x40], xmm31
    entry vmovsh word ptr [rax+0x40]{k1}, xmm3
    entry vmovsh word ptr [rax+0x40]{k2}, xmm13
    entry vmovsh word ptr [rax+0x40]{k3}, xmm23
    entry vmovw xmm1, ebx
    entry vmovw xmm30, r14d
    entry vmovw xmm21, word ptr [rax+0x42]
    entry vmovw edi, xmm2
    entry vmovw r15d, xmm28
    entry vmovw word ptr [rax+0x42], xmm17

    .section .data.rel.ro, "aw"
    .quad 0, 0

// void fp16trap_run(MachineRegisters* registers (rdi), void (*code)() (rsi)): loads all registers
// but rsp, calls the code, stores them back.

    .set vectors, 0
    .set masks, vectors + 32 * 64
    .set generals, masks + 8 * 8
    .set flags, generals + 16 * 8
    .set mxcsr, flags + 8

    .text
    .global fp16trap_run
fp16trap_run:
    .irp register, rbx, rbp, r12, r13, r14, r15
    push \register
    .endr
    sub rsp, 40  // MXCSR of the caller, rax's place, registers, code
    stmxcsr [rsp + 32]
    mov [rsp + 8], rdi
    mov [rsp], rsi
    .irp n, 0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31
    vmovdqu64 zmm\n, [rdi + vectors + 64 * \n]
    .endr
    .irp n, 1, 2, 3, 4, 5, 6, 7
    kmovq k\n, [rdi + masks + 8 * \n]
    .endr
    ldmxcsr [rdi + mxcsr]
    push qword ptr [rdi + flags]
    popfq
    mov rax, [rdi + generals + 8 * 0]
    mov rcx, [rdi + generals + 8 * 1]
    mov rdx, [rdi + generals + 8 * 2]
    mov rbx, [rdi + generals + 8 * 3]
    mov rbp, [rdi + generals + 8 * 5]
    mov rsi, [rdi + generals + 8 * 6]
    .irp n, 8, 9, 10, 11, 12, 13, 14, 15
    mov r\n, [rdi + generals + 8 * \n]
    .endr
    mov rdi, [rdi + generals + 8 * 7]
    call [rsp]
    mov [rsp + 16], rax
    mov rax, [rsp + 8]
    pushfq
    pop qword ptr [rax + flags]
    .irp n, 0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31
    vmovdqu64 [rax + vectors + 64 * \n], zmm\n
    .endr
    .irp n, 1, 2, 3, 4, 5, 6, 7
    kmovq [rax + masks + 8 * \n], k\n
    .endr
    mov [rax + generals + 8 * 1], rcx
    mov [rax + generals + 8 * 2], rdx
    mov [rax + generals + 8 * 3], rbx
    mov [rax + generals + 8 * 5], rbp
    mov [rax + generals + 8 * 6], rsi
    mov [rax + generals + 8 * 7], rdi
    .irp n, 8, 9, 10, 11, 12, 13, 14, 15
    mov [rax + generals + 8 * \n], r\n
    .endr
    mov rcx, [rsp + 16]
    mov [rax + generals + 8 * 0], rcx
    ldmxcsr [rsp + 32]
    add rsp, 40
    .irp register, r15, r14, r13, r12, rbp, rbx
    pop \register
    .endr
    vzeroupper
    ret

    .section .note.GNU-stack, "", @progbits
