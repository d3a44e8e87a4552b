// Describing what a scene object holds without loading what it refers to: `maxhost info` asks every object of a
// scene file that answers ISceneInfo (through Animatable::GetInterface(SCENE_INFO_INTERFACE)) to describe itself
// into an InfoWriter, and shows the description as indented text or as JSON. A plug-in may show the same text
// itself (SceneInfoText).
#pragma once

#include "baseinterface.h"
#include "maxtypes.h"
#include "strclass.h"

#include <functional>

#define SCENE_INFO_INTERFACE Interface_ID(0x51E1F0A7, 0x2C4D6E01)

// Receives a description as nested objects and lists of named values. Keys are plain words ("file",
// "overrides"); inside a list the key is null.
class InfoWriter {
public:
    virtual ~InfoWriter() = default;
    virtual void BeginObject(const MCHAR* key) = 0;
    virtual void EndObject() = 0;
    virtual void BeginList(const MCHAR* key) = 0;
    virtual void EndList() = 0;
    virtual void Text(const MCHAR* key, const MCHAR* value) = 0;
    virtual void Number(const MCHAR* key, int value) = 0;
    virtual void Flag(const MCHAR* key, bool value) = 0;
};

class ISceneInfo : public BaseInterface {
public:
    Interface_ID GetID() override { return SCENE_INFO_INTERFACE; }
    // Writes the object as one object of the listing (the writer's caller has begun it).
    virtual void DescribeSceneInfo(InfoWriter& out) = 0;
};

// The description as the listing's text: one "key: value" line per value, nested objects and lists indented by
// two spaces, list entries led by "- "; a text holding line breaks, quotes or surrounding blanks is shown as a
// quoted string literal; an empty list reads "key: none"; a small list entry (plain values and at most one list of
// texts) reads as one line "- key: value, key: a, b".
MSTR SceneInfoText(const std::function<void(InfoWriter&)>& describe);
// The description as JSON: the values written at the top level form one JSON object.
MSTR SceneInfoJson(const std::function<void(InfoWriter&)>& describe);
