// void zorp_test_trampoline(Frame* frame): see machine_state.h.
//
// The stack at the call, from the stack pointer up: the argument area, the frame's address, the
// target. After the return nothing but the stack pointer is trusted.
#include "tests/support/trampoline_layout.h"

#define STACK_FRAME STACK_ARGUMENT_BYTES
#define STACK_TARGET (STACK_ARGUMENT_BYTES + 8)

    // General registers by their number in Registers::general; rdi, which holds the frame, apart.
    .macro for_each_general load, base
    .irp pair, "rax,0", "rcx,1", "rdx,2", "rbx,3", "rbp,5", "rsi,6", "r8,8", "r9,9", "r10,10", \
               "r11,11", "r12,12", "r13,13", "r14,14", "r15,15"
    \load \base, \pair
    .endr
    .endm
    .macro load_general base, name, number
    movq \base+REGISTERS_GENERAL+8*\number(%rdi), %\name
    .endm
    .macro store_general base, name, number
    movq %\name, \base+REGISTERS_GENERAL+8*\number(%rdi)
    .endm

    .text
    .globl zorp_test_trampoline
    .type zorp_test_trampoline, @function
zorp_test_trampoline:
    endbr64
    .irp name, rbx, rbp, r12, r13, r14, r15
    pushq %\name
    .endr
    movq %rsp, FRAME_HOST_STACK(%rdi)
    stmxcsr FRAME_HOST_MXCSR(%rdi)
    fnstcw FRAME_HOST_X87_CONTROL(%rdi)

    leaq -1024(%rsp), %rsp
    andq $-64, %rsp
    addq FRAME_STACK_OFFSET(%rdi), %rsp
    movq %rdi, STACK_FRAME(%rsp)
    movq FRAME_TARGET(%rdi), %rax
    movq %rax, STACK_TARGET(%rsp)
    movq %rdi, %rdx
    leaq FRAME_STACK_IN(%rdx), %rsi
    movq %rsp, %rdi
    movl $STACK_ARGUMENT_BYTES/8, %ecx
    rep movsq
    movq %rdx, %rdi

    .irp n, 0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31
    vmovdqu64 FRAME_IN+64*\n(%rdi), %zmm\n
    .endr
    cmpq $0, FRAME_CLEAR_UPPER(%rdi)
    je 1f
    vzeroupper
1:
    .irp n, 0,1,2,3,4,5,6,7
    kmovq FRAME_IN+REGISTERS_K+8*\n(%rdi), %k\n
    .endr
    ldmxcsr FRAME_MXCSR_IN(%rdi)
    fldcw FRAME_X87_CONTROL_IN(%rdi)
    for_each_general load_general, FRAME_IN
    movq FRAME_IN+REGISTERS_GENERAL+8*7(%rdi), %rdi

    call *STACK_TARGET(%rsp)

    pushq %rdi
    movq 8+STACK_FRAME(%rsp), %rdi
    popq FRAME_OUT+REGISTERS_GENERAL+8*7(%rdi)
    for_each_general store_general, FRAME_OUT
    pushfq
    popq FRAME_FLAGS_OUT(%rdi)
    cld
    stmxcsr FRAME_MXCSR_OUT(%rdi)
    fnstenv FRAME_X87_OUT(%rdi)
    cmpq $0, FRAME_HAS_XINUSE(%rdi)
    je 2f
    movl $1, %ecx
    xgetbv
    movl %eax, FRAME_XINUSE(%rdi)
    movl %edx, FRAME_XINUSE+4(%rdi)
2:
    .irp n, 0,1,2,3,4,5,6,7,8,9,10,11,12,13,14,15,16,17,18,19,20,21,22,23,24,25,26,27,28,29,30,31
    vmovdqu64 %zmm\n, FRAME_OUT+64*\n(%rdi)
    .endr
    .irp n, 0,1,2,3,4,5,6,7
    kmovq %k\n, FRAME_OUT+REGISTERS_K+8*\n(%rdi)
    .endr
    vzeroupper

    movq %rdi, %rdx
    movq %rsp, %rsi
    leaq FRAME_STACK_OUT(%rdx), %rdi
    movl $STACK_ARGUMENT_BYTES/8, %ecx
    rep movsq

    fninit
    fldcw FRAME_HOST_X87_CONTROL(%rdx)
    ldmxcsr FRAME_HOST_MXCSR(%rdx)
    movq FRAME_HOST_STACK(%rdx), %rsp
    .irp name, r15, r14, r13, r12, rbp, rbx
    popq %\name
    .endr
    ret
    .size zorp_test_trampoline, .-zorp_test_trampoline
    .section .note.GNU-stack, "", @progbits
