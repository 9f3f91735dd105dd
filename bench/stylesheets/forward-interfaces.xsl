<?xml version="1.0"?>
<!-- Makes of an edit of interfaces the native tree that `ocmap forward` makes. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
                xmlns:nc="urn:ietf:params:xml:ns:netconf:base:1.0" xmlns:oc="http://openconfig.net/yang/macsec"
                xmlns="http://tarvex.example/ns/yang/Tarvex-ifmgr-cfg"
                exclude-result-prefixes="nc oc">
  <xsl:output method="xml" omit-xml-declaration="yes"/>

  <xsl:template match="/">
    <config xmlns="urn:ietf:params:xml:ns:netconf:base:1.0">
      <interface-configurations xmlns="http://tarvex.example/ns/yang/Tarvex-ifmgr-cfg">
        <xsl:apply-templates select="nc:rpc/nc:edit-config/nc:config/oc:macsec/oc:interfaces/oc:interface"/>
      </interface-configurations>
    </config>
  </xsl:template>

  <xsl:template match="oc:interface">
    <interface-configuration>
      <active>act</active>
      <interface-name><xsl:value-of select="oc:name"/></interface-name>
      <macsec xmlns="http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-if-cfg">
        <psk-key-chain>
          <xsl:apply-templates select="oc:mka/oc:config/*"/>
        </psk-key-chain>
      </macsec>
    </interface-configuration>
  </xsl:template>

  <xsl:template match="oc:mka-policy" xmlns="http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-if-cfg">
    <policy-name><xsl:value-of select="."/></policy-name>
  </xsl:template>

  <xsl:template match="oc:key-chain" xmlns="http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-if-cfg">
    <key-chain-name><xsl:value-of select="."/></key-chain-name>
  </xsl:template>
</xsl:stylesheet>
