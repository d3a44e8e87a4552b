// Chunked input and output: a save stream of nested chunks with 16-bit ids, and the matching load stream.
#pragma once

#include "strclass.h"

class ISave {
public:
    virtual ~ISave() = default;
    virtual void BeginChunk(USHORT id) = 0;
    virtual void EndChunk() = 0;
    virtual IOResult Write(const void* buf, ULONG nbytes, ULONG* nwrit) = 0;
    // Writes a wide string (UTF-16LE with a terminating zero) into the current chunk.
    virtual IOResult WriteWString(const MCHAR* str) = 0;
    IOResult WriteWString(const MSTR& str) { return WriteWString(str.data()); }
    // Index of a target in the file being written, -1 when it is not saved.
    virtual int GetRefID(void* ptarg) { return -1; }
    // Depth of open chunks.
    virtual int CurChunkDepth() = 0;
};

class ILoad;
class PostLoadCallback {
public:
    virtual ~PostLoadCallback() = default;
    virtual void proc(ILoad* iload) = 0;
};

class ILoad {
public:
    virtual ~ILoad() = default;
    // Opens the next chunk at the current level: IO_OK, IO_END when none is left, IO_ERROR when damaged.
    virtual IOResult OpenChunk() = 0;
    virtual USHORT CurChunkID() = 0;
    // Closes the chunk that is open (skipping whatever of it was not read).
    virtual IOResult CloseChunk() = 0;
    virtual ULONG CurChunkLength() = 0;
    virtual int CurChunkDepth() = 0;
    virtual IOResult Read(void* buf, ULONG nbytes, ULONG* nread) = 0;
    // Reads the rest of the open chunk as a wide string; buf stays valid until the stream is destroyed.
    virtual IOResult ReadWStringChunk(MCHAR** buf) = 0;
    IOResult ReadWStringChunk(MSTR& str);
    // Procedures run after the whole file is read and every reference is restored.
    virtual void RegisterPostLoadCallback(PostLoadCallback* cb) = 0;
    // The object saved with this index, once the file is read.
    virtual void* GetObjectByRefID(int refID) { return nullptr; }
};
