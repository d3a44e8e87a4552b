// The library's classes in the order in which the host asks for them.
#pragma once

class ClassDesc;

int NumLibraryClasses();
// The descriptor of row i of the class table; null outside it.
ClassDesc* LibraryClassDesc(int i);
