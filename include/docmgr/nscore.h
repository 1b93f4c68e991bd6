// Basic types and declaration macros of the component model, with the widths of the frozen
// XPCOM 1.x interfaces: a host compiled against those interfaces calls through exactly these
// types, so none of them may change.
#pragma once

#include <cstdint>

typedef int PRBool;  // 32 bits, not bool: a host reads four bytes
typedef int PRInt32;
typedef unsigned int PRUint32;
typedef PRUint32 nsresult;
typedef PRUint32 nsrefcnt;

#define PR_TRUE 1
#define PR_FALSE 0

// The calling convention of interface methods. The frozen interfaces use __stdcall on 32-bit
// Windows (a build for that target defines NS_STDCALL=__stdcall); elsewhere there is one
// convention and the macro is empty.
#ifndef NS_STDCALL
#define NS_STDCALL
#endif

#define NS_IMETHOD_(type) virtual type NS_STDCALL
#define NS_IMETHOD NS_IMETHOD_(nsresult)
#define NS_IMETHODIMP_(type) type NS_STDCALL
#define NS_IMETHODIMP NS_IMETHODIMP_(nsresult)

#define NS_OK nsresult(0)
#define NS_ERROR_NOT_IMPLEMENTED nsresult(0x80004001)
#define NS_ERROR_NO_INTERFACE nsresult(0x80004002)
#define NS_ERROR_NULL_POINTER nsresult(0x80004003)
#define NS_ERROR_FAILURE nsresult(0x80004005)
#define NS_ERROR_OUT_OF_MEMORY nsresult(0x8007000E)
#define NS_ERROR_INVALID_ARG nsresult(0x80070057)
#define NS_ERROR_NO_AGGREGATION nsresult(0x80040110)
#define NS_ERROR_FACTORY_NOT_REGISTERED nsresult(0x80040154)
#define NS_ERROR_FACTORY_EXISTS nsresult(0x8004000C)
#define NS_ERROR_FACTORY_NOT_LOADED nsresult(0x800401F8)
#define NS_FAILED(r) (((r) & 0x80000000) != 0)
#define NS_SUCCEEDED(r) (!NS_FAILED(r))
