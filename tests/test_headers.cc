// This file is empty on purpose: its target precompiles the headers that all test programs share.
