// Framework identity card: the prerequisites of GeoModel.
AddPrerequisiteComponent("System", Public);
AddPrerequisiteComponent("Mathematics", Public);
