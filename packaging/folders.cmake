# Run by cpack before it packs: every user can enter the folders, whatever the umask under which they were made.
file(CHMOD_RECURSE ${CPACK_TEMPORARY_INSTALL_DIRECTORY}
    DIRECTORY_PERMISSIONS
        OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
