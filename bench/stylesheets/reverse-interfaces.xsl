<?xml version="1.0"?>
<!-- Makes of native interfaces the OpenConfig tree that `ocmap reverse` makes. -->
<xsl:stylesheet version="1.0" xmlns:xsl="http://www.w3.org/1999/XSL/Transform"
                xmlns:ifmgr="http://tarvex.example/ns/yang/Tarvex-ifmgr-cfg"
                xmlns:mka="http://tarvex.example/ns/yang/Tarvex-crypto-macsec-mka-if-cfg"
                xmlns="http://openconfig.net/yang/macsec"
                exclude-result-prefixes="ifmgr mka">
  <xsl:output method="xml" omit-xml-declaration="yes"/>

  <xsl:template match="/">
    <data xmlns="urn:ietf:params:xml:ns:netconf:base:1.0">
      <macsec xmlns="http://openconfig.net/yang/macsec">
        <interfaces>
          <xsl:apply-templates select="ifmgr:interface-configurations/ifmgr:interface-configuration"/>
        </interfaces>
      </macsec>
    </data>
  </xsl:template>

  <xsl:template match="ifmgr:interface-configuration">
    <interface>
      <name><xsl:value-of select="ifmgr:interface-name"/></name>
      <config>
        <name><xsl:value-of select="ifmgr:interface-name"/></name>
      </config>
      <mka>
        <config>
          <xsl:apply-templates select="mka:macsec/mka:psk-key-chain/*"/>
        </config>
      </mka>
    </interface>
  </xsl:template>

  <xsl:template match="mka:policy-name">
    <mka-policy><xsl:value-of select="."/></mka-policy>
  </xsl:template>

  <xsl:template match="mka:key-chain-name">
    <key-chain><xsl:value-of select="."/></key-chain>
  </xsl:template>
</xsl:stylesheet>
