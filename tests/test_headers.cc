// Has nothing in it: its target compiles the headers that all test programs share.
